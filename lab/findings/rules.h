#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/findings/findings.h"
#include "lab/households/rehearsal.h"

namespace lab {

/// Collects findings.
class Findings {
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
void FindAboutRun(const Rehearsal& rehearsal, Findings& findings);
/// What the whole device is: country, mesh, topology, USB 3.
void FindAboutDevice(const Rehearsal& rehearsal, Findings& findings);
/// Legacy files as such: missing, or with line ends of another system.
void FindAboutFiles(const Rehearsal& rehearsal, Findings& findings);
/// The networks' names and whether they are on.
void FindAboutNetworks(const Rehearsal& rehearsal, Findings& findings);
/// Passwords, shared secrets, their key, and the WPS PIN.
void FindAboutSecrets(const Rehearsal& rehearsal, Findings& findings);
/// Security, protected frames, the authentication server, isolation.
void FindAboutProtection(const Rehearsal& rehearsal, Findings& findings);
/// The MAC filter and broadcast detection.
void FindAboutFilters(const Rehearsal& rehearsal, Findings& findings);
/// The guests' access and the schedule of their password.
void FindAboutGuests(const Rehearsal& rehearsal, Findings& findings);
/// The radios' own settings, and those that smart connect takes from them.
void FindAboutRadios(const Rehearsal& rehearsal, Findings& findings);
/// Flags and numbers of which nothing above tells.
void FindAboutWords(const Rehearsal& rehearsal, Findings& findings);

}  // namespace lab
