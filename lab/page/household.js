// One household before and after.

// Of the settings of a network on a radio, and of a radio, those that come first.
const mainSettings = new Set(["enabled", "ssid", "security", "password", "pmf_mode", "restrict_guest_access", "channel",
  "bandwidth", "mode", "txPower", "allowDFSChannels", "usb3Enabled"]);

function valueText(value) {
  if (value === true) return "yes";
  if (value === false) return "no";
  if (value === null || value === undefined) return "(none)";
  if (Array.isArray(value)) return value.length === 0 ? "none" : value.map(valueText).join(", ");
  if (typeof value === "object") return JSON.stringify(value);
  return value === "" ? "(empty)" : String(value);
}

// What a stored network name reads, where it can be told: base64 of UTF-8 without characters that nobody sees.
function storedName(stored) {
  try {
    const bytes = Uint8Array.from(atob(stored), (character) => character.charCodeAt(0));
    const name = new TextDecoder("utf-8", { fatal: true, ignoreBOM: true }).decode(bytes);
    return /[\p{C}\p{Z}\p{Default_Ignorable_Code_Point}]/u.test(name.replaceAll(" ", "")) ? null : name;
  } catch {
    return null;
  }
}

// With quotes around it where blanks at an end would not be seen.
const seen = (text) => /^ | $/.test(text) ? '"' + text + '"' : text;

function before(setting) {
  if (setting.was === null) return element("span", { class: "soft" }, "(none)");
  const name = setting.member === "ssid" ? storedName(setting.was) : null;
  if (name) return [foreign(name), element("div", { class: "soft" }, "stored as ", path(setting.was))];
  return foreign(seen(valueText(setting.was)));
}

function now(setting) {
  const marks = [];
  if (setting.fellBack) marks.push(" ", badge("fell back", "fair"));
  if (setting.decidedByAllBands) marks.push(" ", badge("smart connect: the all-bands file decides", "odd"));
  const meaning = setting.meaning ? ", " + setting.meaning : "";
  return [foreign(valueText(setting.now) + meaning), ...marks];
}

function settingsTable(settings, label) {
  const columns = [{ title: "Setting" }, { title: "Before" }, { title: "Now" }];
  return table({ class: "settings", "aria-label": label }, columns, settings.map((setting) => ({
    marked: setting.fellBack,
    cells: [
      [setting.title, setting.key ? element("div", { class: "soft" }, path(setting.key)) : null],
      before(setting),
      now(setting),
    ],
  })));
}

// The settings that a person asks for and those that fell back; the others can be opened.
function settings(list, label) {
  // Whom the primary network keeps out is asked of nobody: it has no word for that.
  const isAsked = (setting) => mainSettings.has(setting.member) &&
    (setting.member !== "restrict_guest_access" || setting.key);
  const first = list.filter((setting) => isAsked(setting) || setting.fellBack || setting.decidedByAllBands);
  if (first.length === 0 || first.length === list.length) return [settingsTable(list, label)];
  const others = list.filter((setting) => !first.includes(setting));
  return [
    settingsTable(first, label),
    element("details", {}, element("summary", {}, counted(others.length, "more setting", "more settings")),
      settingsTable(others, label + ", more settings")),
  ];
}

function radioCard(part, of) {
  return element("div", { class: "card" },
    element("h3", {}, part.name),
    element("p", { class: "soft" }, path(part.file)),
    settings(part.settings, of + ", " + part.name));
}

function networkSection(network) {
  return section(network.name,
    network.settings.length > 0 ? settingsTable(network.settings, network.name) : null,
    element("div", { class: "cards" }, network.radios.map((radio) => radioCard(radio, network.name))));
}

// A finding with what follows from it under it.
function findingCard(finding, findings) {
  return element("li", { class: "card" },
    element("h3", {}, finding.severity ? [badge(finding.severity, severityTone(finding.severity)), " "] : null,
      foreign(finding.title)),
    element("p", {}, finding.meaning),
    element("p", {}, element("strong", {}, "What to do: "), finding.remedy),
    finding.places && finding.places.length > 0
      ? element("ul", {}, finding.places.map((place) => element("li", {}, path(seen(place))))) : null,
    element("p", { class: "soft" }, path(finding.id)),
    followers(finding, findings).length > 0
      ? element("ul", { class: "findings" }, followers(finding, findings).map((follower) => findingCard(follower, []))) : null);
}

const followers = (finding, findings) => findings.filter((other) => other.cause === finding.id);

function findingsSection(findings) {
  if (findings.length === 0) return section("Findings", element("p", {}, "None."));
  return section("Findings", element("ul", { class: "findings" },
    findings.filter((finding) => !finding.cause).map((finding) => findingCard(finding, findings))));
}

function logSection(lines) {
  if (lines.length === 0) return section("Log", element("p", {}, "Nothing."));
  const columns = [{ title: "Number" }, { title: "Text" }, { title: "What it means" }, { title: "What to do" }];
  const times = new Map();
  for (const line of lines) {
    const key = line.number + " " + line.text;
    times.set(key, { line, count: (times.get(key) || { count: 0 }).count + 1 });
  }
  return section("Log", table({ class: "stacked", "aria-label": "Log" }, columns,
    [...times.values()].map(({ line, count }) => {
      const kind = meanings.messages.get(line.number) || { cause: "", effect: "", remedy: "" };
      const times = count > 1 ? element("div", { class: "soft" }, count + " times") : null;
      return { cells: [String(line.number || "none"), [path(line.text), times], kind.cause + " " + kind.effect, kind.remedy] };
    })));
}

function filterSection(filters) {
  if (filters.length === 0) return null;
  const columns = [{ title: "Name" }, { title: "MAC address" }];
  return section("MAC filters", element("div", { class: "cards" }, filters.map((filter) =>
    element("div", { class: "card" },
      element("h3", {}, "Profile " + filter.id + ": ", foreign(filter.name)),
      element("p", { class: "soft" }, valueText(filter.policy) + ", " +
        counted(filter.devices.length, "device", "devices")),
      element("details", {}, element("summary", {}, "Devices"),
        table({ "aria-label": "Devices of profile " + filter.id }, columns, filter.devices.map((entry) =>
          ({ cells: [foreign(valueText(entry.name)), path(entry.mac)] }))))))));
}

function fileList(title, entries) {
  if (!entries || entries.length === 0) return null;
  return [element("h3", {}, title), element("ul", {}, entries.map((entry) => element("li", {}, entry)))];
}

function filesSection(files) {
  const lists = [
    fileList("Written", files.written.map(path)),
    fileList("Changed", files.changed.map(path)),
    fileList("Removed", files.removed.map(path)),
    fileList("Moved", files.moved.map((move) => [path(move.from), " to ", path(move.to)])),
  ].filter((list) => list !== null);
  return section("Files", lists.length > 0 ? lists : element("p", {}, "As before."));
}

function consoleSection(household) {
  const shown = [["Standard output", household.standardOutput], ["Standard error", household.standardError]]
    .filter(([, text]) => text);
  if (shown.length === 0) return null;
  return section("Console", shown.flatMap(([title, text]) => [element("h3", {}, title), element("pre", {}, text)]));
}

// How the run ended.
function ending(device) {
  const status = device.signal ? "killed by signal " + device.signal
    : device.status === null || device.status < 0 ? "was not run" : "exit status " + device.status;
  return [
    element("p", { class: "facts" },
      badge(device.outcome, outcomeTone(device.outcome)),
      element("span", {}, "from build ", foreign(device.from)),
      element("span", {}, status),
      device.milliseconds === undefined ? null : element("span", { class: "soft" }, device.milliseconds + " ms")),
    device.error ? element("pre", {}, device.error) : null,
  ];
}

function householdSections(household) {
  return [
    findingsSection(household.findings),
    household.device.length > 0 ? section("Device", settingsTable(household.device, "Device")) : null,
    ...household.networks.map(networkSection),
    household.radios.length > 0 ? section("Radios", element("div", { class: "cards" },
      household.radios.map((radio) => radioCard(radio, "Radio")))) : null,
    household.wps.length > 0 ? section("WPS", settingsTable(household.wps, "WPS")) : null,
    filterSection(household.macFilterProfiles),
    logSection(household.log),
    filesSection(household.files),
    consoleSection(household),
  ];
}

// A fleet's record that has no household in it.
function recordSections(record) {
  const known = (id) => meanings.findings.get(id) || { id, title: id, severity: "", meaning: "", remedy: "" };
  return [
    element("p", { class: "soft" }, "The record of this device holds no settings before and after: " +
      "devicelab fleet --details writes them."),
    findingsSection(record.findings.map(known)),
    logSection(record.log),
    section("Files", fileList("Documents", record.documents.map(path)), fileList("Archived", record.archived.map(path)),
      record.documents.length + record.archived.length === 0 ? element("p", {}, "As before.") : null),
  ];
}

function householdView(raw) {
  const device = expand(raw);
  const household = device.household || (device.networks ? device : null);
  return [ending(device), ...(household ? householdSections(household) : recordSections(device))];
}
