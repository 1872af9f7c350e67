#include "lab/household/findings.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "lab/household/rules.h"

namespace lab {
namespace {

const FindingKind& KindOf(std::string_view id) {
  const FindingKind* const kind = FindFindingKind(id);
  if (kind == nullptr) throw std::logic_error("no kind of finding is called " + std::string(id));
  return *kind;
}

void AddAll(const std::vector<Setting>& settings, FindingCollector& findings) {
  for (const Setting& setting : settings) findings.Add(setting.observations);
}

}  // namespace

std::string_view SeverityName(Severity severity) {
  switch (severity) {
    case Severity::Breaks:
      return "breaks";
    case Severity::Weakens:
      return "weakens";
    case Severity::Changes:
      return "changes";
    case Severity::Notes:
      break;
  }
  return "notes";
}

const FindingKind* FindFindingKind(std::string_view id) {
  const auto& kinds = FindingKinds();
  const auto found = std::ranges::find(kinds, id, &FindingKind::id);
  return found == kinds.end() ? nullptr : &*found;
}

void FindingCollector::Add(Observation observation) {
  KindOf(observation.id);
  const auto known = std::ranges::find_if(observations_, [&](const Observation& other) {
    return other.id == observation.id && other.detail == observation.detail;
  });
  if (known == observations_.end()) observations_.push_back(std::move(observation));
}

void FindingCollector::Add(const Observations& observations) {
  for (const Observation& observation : observations) Add(observation);
}

void FindingCollector::AddCause(Cause cause, std::string detail) {
  causes_.emplace_back(std::move(cause), std::move(detail));
}

bool FindingCollector::IsWorthACard(const Cause& cause) const {
  return std::ranges::any_of(observations_, [&](const Observation& observation) {
    return observation.cause == cause && KindOf(observation.id).severity <= KindOf(cause.id).severity;
  });
}

std::vector<Finding> FindingCollector::Take() {
  for (auto& [cause, detail] : causes_) {
    // The card of a cause may itself be what another one caused: keep its place among the observations.
    if (IsWorthACard(cause)) observations_.push_back({cause.id, std::move(detail), {"", cause.origin}});
  }
  const auto has_card = [&](const Cause& cause) {
    return std::ranges::any_of(observations_, [&](const Observation& observation) {
      return observation.id == cause.id && observation.cause.origin == cause.origin;
    });
  };
  std::vector<Finding> findings;
  for (Observation& observation : observations_) {
    const bool follows = !observation.cause.id.empty() && has_card(observation.cause);
    findings.push_back(
        {&KindOf(observation.id), observation.detail, follows ? &KindOf(observation.cause.id) : nullptr});
  }
  // The kinds are in one table, so their addresses have its order.
  std::ranges::stable_sort(findings, {}, &Finding::kind);
  return findings;
}

std::vector<Finding> DetectFindings(const RunView& view, const HouseholdSettings& settings) {
  FindingCollector findings;
  CheckRun(view, findings);
  CheckDevice(view, findings);
  CheckFiles(view, findings);
  AddAll(settings.device, findings);
  for (const auto& network : settings.networks) {
    AddAll(network.settings, findings);
    for (const auto& radio : network.radios) AddAll(radio.settings, findings);
  }
  for (const auto& radio : settings.radios) AddAll(radio.settings, findings);
  AddAll(settings.wps, findings);
  if (view.IsWholeMigration()) {
    CheckSecrets(view, settings, findings);
    CheckProtection(view, settings, findings);
    CheckFilterLists(view, findings);
    CheckRadios(view, findings);
  }
  return findings.Take();
}

std::vector<Finding> DetectFindings(const RunResult& run, std::string_view build) {
  const RunView view(run, build);
  return DetectFindings(view, ReadSettings(view));
}

}  // namespace lab
