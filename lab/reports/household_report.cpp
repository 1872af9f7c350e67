#include "lab/reports/household_report.h"

#include <utility>

#include "lab/households/rehearsal.h"
#include "lab/households/schemas.h"

namespace lab {
namespace {

std::vector<Setting> Shown(std::vector<Setting> settings, const Discretion& discretion) {
  for (Setting& setting : settings) {
    setting.file = discretion.Text(setting.file);
    switch (setting.privacy) {
      case Privacy::Secret:
        if (setting.was) setting.was = discretion.Secret(*setting.was);
        if (setting.now.isString()) setting.now = discretion.Secret(setting.now.asString());
        break;
      case Privacy::Ssid:
        if (setting.was) setting.was = discretion.StoredSsid(*setting.was);
        if (setting.now.isString()) setting.now = discretion.Ssid(setting.now.asString());
        break;
      case Privacy::None:
        if (setting.was) setting.was = discretion.Text(*setting.was);
        setting.now = discretion.Document(setting.now);
    }
  }
  return settings;
}

std::vector<HouseholdReport::FilterProfile> Filters(const Rehearsal& rehearsal,
                                                    const Discretion& discretion) {
  std::vector<HouseholdReport::FilterProfile> filters;
  const Json::Value* const misc = rehearsal.Document("misc.json");
  if (misc == nullptr || !misc->isObject()) return filters;
  const Json::Value& profiles = (*misc)["macFilterProfiles"];
  if (!profiles.isArray()) return filters;
  for (const Json::Value& profile : profiles) {
    if (!profile.isObject()) continue;
    filters.push_back({NumberIn(profile, "id", -1), TextIn(profile, "name"),
                       Meaning(Properties("misc", "profile")["policy"], profile["policy"]),
                       discretion.Document(profile["devices"])});
  }
  return filters;
}

std::vector<HouseholdReport::Found> FindingsByKind(const RunResult& run, const Discretion& discretion) {
  std::vector<HouseholdReport::Found> found;
  for (const Finding& finding : FindIn(run)) {
    if (found.empty() || found.back().kind != finding.kind) found.push_back({finding.kind, {}});
    found.back().places.push_back(discretion.Text(finding.detail));
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
  const Rehearsal rehearsal(run);
  const Verdict verdict = Judge(run);
  HouseholdReport report;
  report.image = image;
  report.from = from;
  report.outcome = verdict.outcome;
  report.status = run.status;
  report.signal = run.signal;
  report.error = discretion.Text(verdict.error);
  report.out = discretion.Text(run.out);
  report.err = discretion.Text(run.err);
  report.device = Shown(DeviceSettings(rehearsal), discretion);
  for (const NetworkPart& network : rehearsal.Networks()) {
    HouseholdReport::Network told{TextIn(*network.now, "name"),
                                  network.is_guest,
                                  Shown(SettingsOf(rehearsal, network), discretion),
                                  {}};
    for (const RadioPart& radio : network.radios) {
      told.radios.push_back({radio.frequency, discretion.Text(radio.file),
                             Shown(SettingsOf(rehearsal, network, radio), discretion)});
    }
    report.networks.push_back(std::move(told));
  }
  for (const RadioPart& radio : rehearsal.Radios()) {
    report.radios.push_back(
        {radio.frequency, discretion.Text(radio.file), Shown(SettingsOf(rehearsal, radio), discretion)});
  }
  report.wps = Shown(WPSSettings(rehearsal), discretion);
  report.filters = Filters(rehearsal, discretion);
  report.findings = FindingsByKind(run, discretion);
  for (const NumberedLine& line : rehearsal.Log()) {
    report.log.push_back({line.number, line.severity, discretion.LogText(line)});
  }
  report.files = Shown(Diff(run.before, run.after), discretion);
  return report;
}

}  // namespace lab
