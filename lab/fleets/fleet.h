#pragma once

#include <filesystem>
#include <iosfwd>
#include <set>
#include <string>
#include <vector>

#include "lab/fleets/device_rehearsal.h"

namespace lab::fleets {

/// What a fleet's devices are, how they are rehearsed, and where the records go.
struct FleetOptions {
  /// As DeviceQueue takes them.
  std::vector<std::string> images;
  std::string from;
  std::filesystem::path output;
  unsigned jobs = 1;
  RehearsalOptions rehearsal;
  /// Names of outcomes and ids of findings.
  std::set<std::string> fail_on;
};

/// Throws std::invalid_argument, naming it, for a name that is neither an outcome nor a finding.
void RequireKnown(const std::set<std::string>& fail_on);

/// Rehearses the devices that the output does not have yet, and adds a record each. Tells how far it is, and
/// what goes wrong, on `messages`. Gives whether every device has its record now. Throws std::exception where
/// it cannot go on. Records that were written stay in every case.
bool RehearseFleet(const FleetOptions& options, std::ostream& messages, bool is_terminal);

/// Whether a record has one of the outcomes or findings.
bool IsNamedIn(const std::set<std::string>& names, const Record& record);

}  // namespace lab::fleets
