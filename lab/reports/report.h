#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "lab/images/tree.h"
#include "lab/runs/program_run.h"

namespace lab {

/// "err" and so on, as logger(1) and journalctl(1) name the severities 0 to 7.
std::string_view SeverityName(int severity);

/// Text that is safe to print to a terminal: control characters other than tab and line feed as "\x1b".
std::string Printable(std::string_view text);

/// Prints a run for a person: the command, how it ended, what it printed, what it did to the device's files,
/// the new JSON documents as they stand there, and what it logged.
void PrintReport(std::ostream& out, std::string_view command, const RunResult& result);

/// Prints a device for a person: every path with its kind, mode and size, then the content of the small text
/// files.
void PrintTree(std::ostream& out, const Tree& tree);

}  // namespace lab
