#include "lab/reports/household_report.h"

#include <algorithm>
#include <utility>

#include "lab/household/message_kinds.h"
#include "lab/household/run_view.h"
#include "lab/household/schemas.h"
#include "lab/text/json.h"

namespace lab {
namespace {

constexpr std::size_t kLongestOther = 200;

bool IsContainer(const Json::Value& value) {
  return value.isObject() || value.isArray();
}

/// A document that the program did not write may hold anything where a plain value belongs: that is told as
/// the beginning of its text.
Json::Value Plain(const Json::Value& value) {
  const bool is_list = value.isArray() && std::none_of(value.begin(), value.end(), IsContainer);
  if (!IsContainer(value) || is_list) return value;
  return JsonLine(value).substr(0, kLongestOther);
}

std::vector<Setting> Shown(std::vector<Setting> settings, const Discretion& discretion) {
  // Most settings of a part are of one file.
  std::string file;
  std::string shown_file;
  for (Setting& setting : settings) {
    if (setting.file != file) {
      file = setting.file;
      shown_file = discretion.Text(file);
    }
    setting.file = shown_file;
    if (setting.was) setting.was = discretion.Value(setting.key, *setting.was);
    for (Observation& found : setting.observations) found.detail = discretion.Entry(found.detail);
    const std::string name = setting.member.substr(setting.member.rfind('.') + 1);
    setting.now = Plain(discretion.Member(name, setting.now));
  }
  return settings;
}

std::vector<HouseholdReport::Part> Parts(const std::vector<HouseholdSettings::Radio>& radios,
                                         const Discretion& discretion) {
  std::vector<HouseholdReport::Part> parts;
  for (const HouseholdSettings::Radio& radio : radios) {
    parts.push_back(
        {radio.view->frequency, discretion.Text(radio.view->file), Shown(radio.settings, discretion)});
  }
  return parts;
}

std::string NameIn(const Json::Value& object, const Discretion& discretion) {
  return discretion.Member("name", TextIn(object, "name")).asString();
}

Json::Value FilteredDevices(const Json::Value& devices, const Discretion& discretion) {
  Json::Value told(Json::arrayValue);
  if (!devices.isArray()) return told;
  for (const Json::Value& device : devices) {
    if (!device.isObject()) continue;
    Json::Value& entry = told.append(Json::Value(Json::objectValue));
    entry["name"] = NameIn(device, discretion);
    entry["mac"] = discretion.Member("mac", TextIn(device, "mac"));
  }
  return told;
}

std::vector<HouseholdReport::FilterProfile> Filters(const RunView& view, const Discretion& discretion) {
  std::vector<HouseholdReport::FilterProfile> filters;
  const Json::Value* const misc = view.Document("misc.json");
  if (misc == nullptr || !misc->isObject()) return filters;
  const Json::Value& profiles = (*misc)["macFilterProfiles"];
  if (!profiles.isArray()) return filters;
  for (const Json::Value& profile : profiles) {
    if (!profile.isObject()) continue;
    filters.push_back({NumberIn(profile, "id", -1), NameIn(profile, discretion),
                       Meaning(Properties("misc", "profile")["policy"], profile["policy"]),
                       FilteredDevices(profile["devices"], discretion)});
  }
  return filters;
}

std::vector<HouseholdReport::FindingGroup> GroupFindings(const std::vector<Finding>& findings,
                                                         const Discretion& discretion) {
  std::vector<HouseholdReport::FindingGroup> groups;
  for (const Finding& finding : findings) {
    auto group = std::ranges::find_if(groups, [&](const HouseholdReport::FindingGroup& other) {
      return other.kind == finding.kind && other.cause == finding.cause;
    });
    if (group == groups.end()) group = groups.insert(group, {finding.kind, finding.cause, {}});
    group->places.push_back(discretion.Entry(finding.detail));
  }
  return groups;
}

/// What a failed run means is told by its reason and by what is on the device.
std::string EffectOfFailure(const RunView& view, const std::vector<Finding>& findings) {
  const auto found = [&](std::string_view id) {
    return std::ranges::any_of(findings, [=](const Finding& finding) { return finding.kind->id == id; });
  };
  if (found("archive-stopped")) return "All documents are written; not all old files are archived.";
  if (!found("migration-stopped")) return "None for the Wi-Fi: there was nothing to write.";
  if (view.Asked() != Request::Everything) return "global.json is not written.";
  std::string missing;
  for (const std::string& name : view.MissingDocuments()) missing += (missing.empty() ? "" : ", ") + name;
  return missing.empty() ? "A document is not written." : "These documents are missing: " + missing + ".";
}

std::string EffectOf(int message, const RunView& view, const std::vector<Finding>& findings) {
  if (message == kUpdateFailed) return EffectOfFailure(view, findings);
  const MessageKind* const kind = FindMessageKind(message);
  return kind == nullptr ? "" : std::string(kind->effect);
}

TreeDiff Shown(TreeDiff files, const Discretion& discretion) {
  for (auto* paths : {&files.written, &files.changed, &files.removed}) {
    for (std::string& path : *paths) path = discretion.Text(path);
  }
  for (TreeDiff::Move& move : files.moved) {
    move = {discretion.Text(move.from), discretion.Text(move.to)};
  }
  return files;
}

}  // namespace

HouseholdReport Tell(const std::string& image, const std::string& from, const RunResult& run,
                     const Discretion& discretion) {
  const RunView view(run, from);
  const HouseholdSettings settings = ReadSettings(view);
  const std::vector<Finding> findings = DetectFindings(view, settings);
  const Verdict verdict = Judge(run);
  HouseholdReport report;
  report.image = discretion.Text(image);
  report.from = from;
  report.outcome = verdict.outcome;
  report.status = run.status;
  report.signal = run.signal;
  report.error = discretion.Text(verdict.error);
  report.out = discretion.Text(run.out);
  report.err = discretion.Text(run.err);
  report.device = Shown(settings.device, discretion);
  for (const HouseholdSettings::Network& network : settings.networks) {
    report.networks.push_back({NameIn(*network.view->now, discretion), network.view->is_guest,
                               Shown(network.settings, discretion), Parts(network.radios, discretion)});
  }
  report.radios = Parts(settings.radios, discretion);
  report.wps = Shown(settings.wps, discretion);
  report.filters = Filters(view, discretion);
  report.findings = GroupFindings(findings, discretion);
  for (const NumberedLine& line : view.Log()) {
    report.log.push_back(
        {line.number, line.severity, discretion.LogText(line), EffectOf(line.number, view, findings)});
  }
  report.files = Shown(Diff(run.before, run.after), discretion);
  return report;
}

}  // namespace lab
