"use strict";

// What the page shows. An array of objects stands in it as {"refs": [places among "shared"]}.
const data = JSON.parse(document.getElementById("data").textContent);

const isRefs = (value) => value !== null && typeof value === "object" && Array.isArray(value.refs);

// The value with all that it refers to.
function expand(value) {
  if (Array.isArray(value)) return value.map(expand);
  if (isRefs(value)) return value.refs.map((place) => expand(data.shared[place]));
  if (value === null || typeof value !== "object") return value;
  return Object.fromEntries(Object.entries(value).map(([name, member]) => [name, expand(member)]));
}

const meanings = {
  outcomes: data.meanings.outcomes,
  findings: new Map(expand(data.meanings.findings).map((finding) => [finding.id, finding])),
  messages: new Map(expand(data.meanings.messages).map((message) => [message.number, message])),
};

const severityTones = new Map([["breaks", "bad"], ["weakens", "fair"], ["changes", "odd"], ["notes", ""]]);
const severityTone = (severity) => severityTones.get(severity) || "";

const outcomeTones = new Map([
  ["migrated", "good"],
  ["nothing-to-do", "good"],
  ["migrated-with-fallbacks", "fair"],
  ["skipped", "fair"],
  ["failed", "bad"],
  ["crashed", "bad"],
  ["timed-out", "bad"],
]);
const outcomeTone = (outcome) => outcomeTones.get(outcome) || "odd";

// The ids of what was found at a device, be it a fleet's record or a household of its own.
function findingIds(device) {
  return isRefs(device.findings) ? [...new Set(expand(device.findings).map((finding) => finding.id))] : device.findings || [];
}

function logNumbers(device) {
  const lines = isRefs(device.log) ? device.log.refs.map((place) => data.shared[place]) : [];
  return new Set(lines.map((line) => line.number));
}

// "network.json.default[1].ssid" as "network.json.default[…].ssid": settings that are the same but for their place.
const settingKind = (what) => what.replace(/\[\d+\]/g, "[…]");

const ssidTexts = new Map();

// The network names in a part of a household, found without expanding it.
function ssidsIn(place) {
  if (!ssidTexts.has(place)) {
    const value = data.shared[place];
    const own = value.member === "ssid" ? [String(value.now)] : [];
    const parts = [value.settings, value.radios].filter(isRefs);
    ssidTexts.set(place, own.concat(parts.flatMap((part) => part.refs.flatMap(ssidsIn))));
  }
  return ssidTexts.get(place);
}

// All that the search looks through for a device.
function searchText(device) {
  const household = device.household || device;
  const networks = isRefs(household.networks) ? household.networks.refs.flatMap(ssidsIn) : [];
  const findings = findingIds(device);
  return [
    device.image,
    device.from,
    device.outcome,
    device.error,
    ...findings,
    ...findings.map((id) => (meanings.findings.get(id) || { title: "" }).title),
    ...new Set(networks),
    ...expand(device.log || []).map((line) => line.text),
    ...expand(household.macFilterProfiles || []).flatMap((filter) =>
      filter.devices.flatMap((entry) => [entry.name, entry.mac])),
    ...expand(device.differences || []).flatMap((difference) => [difference.what, difference.old, difference.new]),
  ].filter((text) => typeof text === "string").join("\n").toLowerCase();
}
