#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "lab/images/tree.h"
#include "lab/reports/discretion.h"
#include "lab/runs/program_run.h"

namespace lab {

/// "err" and so on, as logger(1) and journalctl(1) name the severities 0 to 7.
std::string_view SeverityName(int severity);

/// Prints a run as it was: the command, how it ended, what it printed, what it did to the device's files, the
/// new JSON documents as they stand there, and what it logged; all of it with discretion.
void PrintReport(std::ostream& out, std::string_view command, const RunResult& result,
                 const Discretion& discretion);

/// Prints a device for a person: every path with its kind, mode and size, then the content of the small text
/// files, with discretion.
void PrintTree(std::ostream& out, const Tree& tree, const Discretion& discretion);

}  // namespace lab
