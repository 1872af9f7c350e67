// The table of devices: what of it is to be seen stands behind the address's "#", so that "back" leads to it again.

const rowsOnAPage = 50;
const isComparison = data.kind === "comparison";

const address = () => new URLSearchParams(location.hash.slice(1));

// An address like the present one but for some of its members; those that are empty are left out.
function addressWith(changes, from) {
  const members = new URLSearchParams(from || address());
  members.delete("device");
  members.delete("page");
  for (const [name, value] of Object.entries(changes)) {
    if (value === "" || value === null) members.delete(name);
    else members.set(name, value);
  }
  return "#" + members.toString();
}

const differenceKinds = (device) => new Set(expand(device.differences || []).map(({ what }) => settingKind(what)));

const filters = {
  outcome: (device, wanted) => device.outcome === wanted,
  finding: (device, wanted) => findingIds(device).includes(wanted),
  log: (device, wanted) => logNumbers(device).has(Number(wanted)),
  setting: (device, wanted) => differenceKinds(device).has(wanted),
};

let searchTexts = null;

// The places of the devices that an address asks for, in its order.
function wantedDevices(members) {
  const words = (members.get("q") || "").toLowerCase().split(/\s+/).filter((word) => word !== "");
  if (words.length > 0 && searchTexts === null) searchTexts = data.devices.map(searchText);
  const set = Object.entries(filters).filter(([name]) => members.get(name));
  const places = [...data.devices.keys()].filter((place) =>
    set.every(([name, has]) => has(data.devices[place], members.get(name))) &&
    words.every((word) => searchTexts[place].includes(word)));
  return sortDevices(places, members.get("sort") || "");
}

const sortKeys = {
  image: (device) => device.image,
  outcome: (device) => meanings.outcomes.indexOf(device.outcome),
  findings: (device) => -(isComparison ? device.differences.refs.length : findingIds(device).length),
};

function sortDevices(places, name) {
  if (!Object.hasOwn(sortKeys, name)) return places;
  const keys = new Map(places.map((place) => [place, sortKeys[name](data.devices[place])]));
  const order = (one, other) => (one < other ? -1 : one > other ? 1 : 0);
  return places.sort((one, other) => order(keys.get(one), keys.get(other)) || one - other);
}

function deviceRow(place) {
  const device = data.devices[place];
  const link = element("a", { href: "#device=" + place }, path(device.image));
  if (isComparison) return { cells: [link, foreign(device.from), String(device.differences.refs.length)] };
  const found = findingIds(device).map((id) =>
    badge(id, severityTone((meanings.findings.get(id) || {}).severity)));
  const cells = [link, foreign(device.from), badge(device.outcome, outcomeTone(device.outcome)), found,
    device.error ? foreign(device.error) : []];
  return { cells };
}

function deviceTable(places, members) {
  const sorted = members.get("sort");
  const sortable = (title, name) => ({
    title,
    head: element("a", { href: addressWith({ sort: sorted === name ? "" : name }) }, title),
    sort: sorted === name ? "ascending" : null,
  });
  const columns = isComparison
    ? [sortable("Device", "image"), { title: "From" }, sortable("Differences", "findings")]
    : [sortable("Device", "image"), { title: "From" }, sortable("Outcome", "outcome"),
      sortable("Findings", "findings"), { title: "Error" }];
  return table({ class: "devices stacked", "aria-label": "Devices" }, columns, places.map(deviceRow));
}

function pager(count, page, pages) {
  const first = page * rowsOnAPage;
  const range = count === 0 ? "No device" :
    "Devices " + (first + 1).toLocaleString("en") + " to " +
    Math.min(first + rowsOnAPage, count).toLocaleString("en") + " of " + count.toLocaleString("en");
  const to = (number, text) => element("a", { href: addressWith({ page: number === 0 ? "" : number }) }, text);
  return element("nav", { class: "pager", "aria-label": "Pages" },
    element("span", { role: "status", id: "count" }, range),
    page > 0 ? to(0, "First") : null,
    page > 0 ? to(page - 1, "Previous") : null,
    page + 1 < pages ? to(page + 1, "Next") : null,
    page + 1 < pages ? to(pages - 1, "Last") : null);
}

// Shows the rows that the address asks for in `holder`.
function showDevices(holder) {
  const members = address();
  const places = wantedDevices(members);
  const pages = Math.max(1, Math.ceil(places.length / rowsOnAPage));
  const page = Math.min(Math.max(0, Number.parseInt(members.get("page") || "0", 10) || 0), pages - 1);
  const shown = places.slice(page * rowsOnAPage, (page + 1) * rowsOnAPage);
  holder.replaceChildren(pager(places.length, page, pages), deviceTable(shown, members));
}
