#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/household/findings.h"
#include "lab/household/run_view.h"

namespace lab {

/// Collects findings.
class FindingCollector {
 public:
  /// `id` is that of a kind.
  void Add(std::string_view id, std::string detail);
  /// How many there are.
  std::size_t Count() const { return findings_.size(); }
  /// Puts a note before the details of those from that place on.
  void NoteFrom(std::size_t place, std::string_view note);
  /// In the order of the kinds, and of one kind in the order in which they were added.
  std::vector<Finding> Take();

 private:
  std::vector<Finding> findings_;
};

// The rules, by what they are about.

/// How the run ended and what an earlier one left.
void CheckRun(const RunView& view, FindingCollector& findings);
/// What the whole device is: country, mesh, topology, USB 3.
void CheckDevice(const RunView& view, FindingCollector& findings);
/// Legacy files as such: missing, or with line ends of another system.
void CheckFiles(const RunView& view, FindingCollector& findings);
/// The networks' names and whether they are on.
void CheckNetworks(const RunView& view, FindingCollector& findings);
/// Passwords, shared secrets, their key, and the WPS PIN.
void CheckSecrets(const RunView& view, FindingCollector& findings);
/// Security, protected frames, the authentication server, isolation.
void CheckProtection(const RunView& view, FindingCollector& findings);
/// The MAC filter and broadcast detection.
void CheckFilters(const RunView& view, FindingCollector& findings);
/// The guests' access and the schedule of their password.
void CheckGuests(const RunView& view, FindingCollector& findings);
/// The radios' own settings, and those that smart connect takes from them.
void CheckRadios(const RunView& view, FindingCollector& findings);
/// Flags and numbers of which nothing above tells.
void CheckWords(const RunView& view, FindingCollector& findings);

}  // namespace lab
