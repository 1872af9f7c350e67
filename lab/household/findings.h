#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/runs/program_run.h"

namespace lab {

/// How hard a finding hits the household.
enum class Severity {
  Breaks,   // a device falls off, or a guard is gone
  Weakens,  // less secure than before
  Changes,  // behaves otherwise than before
};

/// "breaks", "weakens", "changes".
std::string_view SeverityName(Severity severity);

/// Something that a household or its security will notice after an upgrade.
struct FindingKind {
  /// A name for programs: "ssid-lost".
  std::string_view id;
  std::string_view title;
  /// What it means for the household.
  std::string_view meaning;
  /// What to do about it.
  std::string_view remedy;
  Severity severity;
};

/// All kinds, those that break first.
const std::vector<FindingKind>& FindingKinds();

/// The kind of that id, null where there is none.
const FindingKind* FindFindingKind(std::string_view id);

struct Finding {
  const FindingKind* kind;
  /// Where and what: file, key and word. Any bytes; never a password or PIN, but names of files with MAC
  /// addresses.
  std::string detail;
};

/// What the rules find in a run, by the device's image (run.before), the documents (run.after) and the log,
/// in the order of the kinds. Never throws for what a device or document holds.
std::vector<Finding> DetectFindings(const RunResult& run);

}  // namespace lab
