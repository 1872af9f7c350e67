#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lab/household/findings.h"
#include "lab/household/observation.h"
#include "lab/household/run_view.h"
#include "lab/household/settings.h"

namespace lab {

/// Collects findings.
class FindingCollector {
 public:
  /// The observation's id is that of a kind. One that is there already is not added again.
  void Add(Observation observation);
  void Add(std::string_view id, std::string detail) { Add({id, std::move(detail), {}}); }
  void Add(const Observations& observations);
  /// Adds a finding from which others follow, if any of those is as grave as itself. Without it they stand
  /// for themselves.
  void AddCause(Cause cause, std::string detail);
  /// In the order of the kinds, and of one kind in the order in which they were added.
  std::vector<Finding> Take();

 private:
  bool IsWorthACard(const Cause& cause) const;

  Observations observations_;
  std::vector<std::pair<Cause, std::string>> causes_;
};

// The rules that need more than one setting, by what they are about.

/// How the run ended, whether the program did its work, and what an earlier run left.
void CheckRun(const RunView& view, FindingCollector& findings);
/// What is left of the files of 1.3, and the topology's documents.
void CheckDevice(const RunView& view, FindingCollector& findings);
/// Legacy files as such: missing, empty, or with line ends of another system.
void CheckFiles(const RunView& view, FindingCollector& findings);
/// The secret key, and secrets that are not encrypted.
void CheckSecrets(const RunView& view, const HouseholdSettings& settings, FindingCollector& findings);
/// Frame protection and WPA3.
void CheckProtection(const RunView& view, const HouseholdSettings& settings, FindingCollector& findings);
/// WPS, and what smart connect takes from the radios.
void CheckRadios(const RunView& view, FindingCollector& findings);
/// What is left out of the MAC filter's lists.
void CheckFilterLists(const RunView& view, FindingCollector& findings);

// The rules that judge a single row of the table of settings.

/// A network's MAC filter.
Observations ObserveFilter(const RunView& view, const NetworkView& network);
/// The mesh: its role and its router's nodes.
Observations ObserveMeshRole(const RunView& view);
Observations ObserveRepeater(const RunView& view);

/// The cause of what is found in a file that is missing, empty or has line ends of another system; none for
/// other files.
Cause CauseInFile(const RunView& view, const std::string& file, bool has_carriage_return);
/// Finds out whether the secret key is why secrets were lost, and makes it their cause.
void BlameSecretKey(const RunView& view, HouseholdSettings& settings);

}  // namespace lab
