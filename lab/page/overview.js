// A fleet, or a comparison, at a glance: charts that lead to their devices, and the table of devices.

// Where the way back from a device leads.
let listAddress = "#all";

// How many devices have each of the things that `thingsOf` gives for a device.
function countDevices(thingsOf) {
  const counts = new Map();
  for (const device of data.devices) {
    for (const thing of new Set(thingsOf(device))) counts.set(thing, (counts.get(thing) || 0) + 1);
  }
  return [...counts].sort((one, other) => other[1] - one[1]);
}

function outcomeEntries() {
  return countDevices((device) => [device.outcome]).map(([outcome, count]) =>
    ({ label: outcome, count, tone: outcomeTone(outcome), href: "#outcome=" + encodeURIComponent(outcome) }));
}

// Those that break something first, however few devices have them.
function findingEntries() {
  const kindOf = (id) => meanings.findings.get(id) || { title: id, severity: "", meaning: "" };
  const severities = [...severityTones.keys(), ""];
  const rank = ([id]) => severities.indexOf(kindOf(id).severity);
  return countDevices(findingIds).sort((one, other) => rank(one) - rank(other)).map(([id, count]) => {
    const kind = kindOf(id);
    const tone = severityTone(kind.severity);
    return { label: kind.title, count, tone, badge: kind.severity && badge(kind.severity, tone), note: kind.meaning,
      href: "#finding=" + encodeURIComponent(id) };
  });
}

function logEntries() {
  return countDevices(logNumbers).map(([number, count]) => {
    const kind = meanings.messages.get(number);
    return { label: String(number || "without a number"), count, note: kind ? kind.cause : "", href: "#log=" + number };
  });
}

function differenceEntries() {
  return countDevices(differenceKinds).map(([what, count]) =>
    ({ label: what, count, href: "#setting=" + encodeURIComponent(what) }));
}

function chartSection(title, entries) {
  return section(title, entries.length > 0 ? chart(entries, data.devices.length) : element("p", {}, "None."));
}

function logChart() {
  return element("details", {}, element("summary", {}, "Log messages, by devices"),
    chart(logEntries(), data.devices.length));
}

function choice(name, title, entries) {
  const options = [...entries].map(([value, text]) => element("option", { value }, text));
  return element("label", {}, title, element("select", { name }, element("option", { value: "" }, "any"), options));
}

function filterForm() {
  const form = element("form", { class: "filters", role: "search" },
    element("label", {}, isComparison ? "Search in names and settings" : "Search in names, errors, findings, SSIDs, log",
      element("input", { type: "search", name: "q", autocomplete: "off", spellcheck: "false" })),
    isComparison
      ? choice("setting", "Setting", countDevices(differenceKinds).map(([what]) => [what, what]))
      : [
        choice("outcome", "Outcome", outcomeEntries().map(({ label }) => [label, label])),
        choice("finding", "Finding", countDevices(findingIds).map(([id]) => [id, id])),
        choice("log", "Log number", countDevices(logNumbers).map(([number]) => [number, String(number)])),
      ],
    element("button", { type: "button" }, "Clear filters"));
  return form;
}

function makeOverview(title) {
  const form = filterForm();
  const holder = element("div", {});
  const charts = element("div", { class: "charts" }, isComparison
    ? chartSection("Settings that differ", differenceEntries())
    : [element("div", {}, chartSection("Outcomes", outcomeEntries()), logChart()),
      chartSection("Findings", findingEntries())]);
  const devices = section("Devices", form, holder);
  const view = element("div", {}, element("h1", { tabindex: "-1" }, title), charts, devices);

  // What is typed changes the present entry of the history; a choice makes a new one.
  form.elements.q.addEventListener("input", () => {
    history.replaceState(null, "", addressWith({ q: form.elements.q.value }));
    update();
  });
  form.addEventListener("change", (event) => {
    if (event.target.name !== "q") location.hash = addressWith({ [event.target.name]: event.target.value });
  });
  form.addEventListener("submit", (event) => event.preventDefault());
  form.querySelector("button").addEventListener("click", () => { location.hash = "#all"; });

  // Makes all of it agree with the address.
  function update() {
    const members = address();
    listAddress = location.hash || "#all";
    for (const field of form.elements) {
      if (field.name && document.activeElement !== field) field.value = members.get(field.name) || "";
    }
    for (const link of charts.querySelectorAll("a")) {
      const [[name, value]] = new URLSearchParams(link.hash.slice(1));
      if (members.get(name) === value) link.setAttribute("aria-current", "true");
      else link.removeAttribute("aria-current");
    }
    showDevices(holder);
  }
  return { view, update, heading: devices.querySelector("h2") };
}
