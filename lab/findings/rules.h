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

}  // namespace lab
