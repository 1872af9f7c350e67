#include "lab/household/findings.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "lab/household/rules.h"

namespace lab {

std::string_view SeverityName(Severity severity) {
  switch (severity) {
    case Severity::Breaks:
      return "breaks";
    case Severity::Weakens:
      return "weakens";
    case Severity::Changes:
      break;
  }
  return "changes";
}

const FindingKind* FindFindingKind(std::string_view id) {
  const auto& kinds = FindingKinds();
  const auto found = std::ranges::find(kinds, id, &FindingKind::id);
  return found == kinds.end() ? nullptr : &*found;
}

void FindingCollector::Add(std::string_view id, std::string detail) {
  const FindingKind* const kind = FindFindingKind(id);
  if (kind == nullptr) throw std::logic_error("no kind of finding is called " + std::string(id));
  findings_.push_back({kind, std::move(detail)});
}

void FindingCollector::NoteFrom(std::size_t place, std::string_view note) {
  for (; place < findings_.size(); ++place) findings_[place].detail.insert(0, note);
}

std::vector<Finding> FindingCollector::Take() {
  // The kinds stand in one table, so their addresses have its order.
  std::ranges::stable_sort(findings_, {}, &Finding::kind);
  return std::move(findings_);
}

std::vector<Finding> DetectFindings(const RunResult& run) {
  const RunView view(run);
  FindingCollector findings;
  CheckRun(view, findings);
  CheckDevice(view, findings);
  CheckFiles(view, findings);
  if (view.IsWholeMigration()) {
    CheckNetworks(view, findings);
    CheckSecrets(view, findings);
    CheckProtection(view, findings);
    CheckFilters(view, findings);
    CheckGuests(view, findings);
    CheckRadios(view, findings);
    CheckWords(view, findings);
  }
  return findings.Take();
}

}  // namespace lab
