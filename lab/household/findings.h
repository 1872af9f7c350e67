#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/household/settings.h"

namespace lab {

/// How hard a finding hits the household.
enum class Severity {
  Breaks,   // a device loses the connection, or a protection is gone
  Weakens,  // less secure than before
  Changes,  // behaves differently than before
  Notes,    // nothing changes for the household; not part of a verdict
};

/// "breaks", "weakens", "changes", "notes".
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

/// The kind of that id, null if there is none.
const FindingKind* FindFindingKind(std::string_view id);

struct Finding {
  const FindingKind* kind;
  /// Where and what: file, key and value. Any bytes; never a password or PIN, but names of files with MAC
  /// addresses.
  std::string detail;
  /// The kind of the finding that this one follows from, which is in the same list; null if it stands for
  /// itself.
  const FindingKind* cause = nullptr;
};

/// What the rules find in a run, by the device's image (run.before), the documents (run.after) and the log,
/// in the order of the kinds. The observations of `settings` are those of the same run. Never throws for what
/// a device or document holds.
std::vector<Finding> DetectFindings(const RunView& view, const HouseholdSettings& settings);
std::vector<Finding> DetectFindings(const RunResult& run, std::string_view build);

}  // namespace lab
