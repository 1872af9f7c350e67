#include "lab/reports/household_report.h"

#include <json/writer.h>

#include <algorithm>
#include <utility>

#include "lab/household/run_view.h"
#include "lab/household/schemas.h"

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
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value).substr(0, kLongestOther);
}

std::vector<Setting> Shown(std::vector<Setting> settings, const Discretion& discretion) {
  for (Setting& setting : settings) {
    setting.file = discretion.Text(setting.file);
    if (setting.was) setting.was = discretion.Value(setting.key, *setting.was);
    const std::string name = setting.member.substr(setting.member.rfind('.') + 1);
    setting.now = Plain(discretion.Member(name, setting.now));
  }
  return settings;
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

std::vector<HouseholdReport::FilterProfile> Filters(const RunView& view,
                                                    const Discretion& discretion) {
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

std::vector<HouseholdReport::FindingGroup> FindingsByKind(const RunResult& run, const Discretion& discretion) {
  std::vector<HouseholdReport::FindingGroup> found;
  for (const Finding& finding : DetectFindings(run)) {
    if (found.empty() || found.back().kind != finding.kind) found.push_back({finding.kind, {}});
    found.back().places.push_back(discretion.Entry(finding.detail));
  }
  return found;
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
  const RunView view(run);
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
  report.device = Shown(DeviceSettings(view), discretion);
  for (const NetworkView& network : view.Networks()) {
    HouseholdReport::Network told{NameIn(*network.now, discretion),
                                  network.is_guest,
                                  Shown(SettingsOf(view, network), discretion),
                                  {}};
    for (const RadioView& radio : network.radios) {
      told.radios.push_back({radio.frequency, discretion.Text(radio.file),
                             Shown(SettingsOf(view, network, radio), discretion)});
    }
    report.networks.push_back(std::move(told));
  }
  for (const RadioView& radio : view.Radios()) {
    report.radios.push_back(
        {radio.frequency, discretion.Text(radio.file), Shown(SettingsOf(view, radio), discretion)});
  }
  report.wps = Shown(WPSSettings(view), discretion);
  report.filters = Filters(view, discretion);
  report.findings = FindingsByKind(run, discretion);
  for (const NumberedLine& line : view.Log()) {
    report.log.push_back({line.number, line.severity, discretion.LogText(line)});
  }
  report.files = Shown(Diff(run.before, run.after), discretion);
  return report;
}

}  // namespace lab
