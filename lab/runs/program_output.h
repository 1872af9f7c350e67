#pragma once

#include <chrono>
#include <string>

#include "lab/images/descriptor.h"
#include "lab/runs/log_collector.h"
#include "lab/runs/program_run.h"

namespace lab {

/// A stream of a program's that is kept as text: its first 16 MiB, for a program gone wild may print without
/// end.
class ProgramOutput {
 public:
  explicit ProgramOutput(Console console);

  int WritingEnd() const { return writing_.Get(); }
  void CloseWritingEnd() { writing_.Close(); }
  /// -1 once nothing more can come, and where nobody reads.
  int ReadingEnd() const { return reading_.Get(); }

  /// Takes in what waits, without blocking. Comes to an end also where more is printed all the time.
  void Drain();

  std::string Take() { return std::move(text_); }

 private:
  Descriptor reading_;
  Descriptor unread_;  // held open
  Descriptor writing_;
  std::string text_;
};

/// Drains all that the program behind `process` (a descriptor of pidfd_open(2)) sends until it ends or the
/// deadline passes. Gives whether it ended. `log` may be null.
bool DrainUntilEnd(const Descriptor& process, ProgramOutput& out, ProgramOutput& err, LogCollector* log,
                   std::chrono::steady_clock::time_point deadline);

/// For a run's duration: whole milliseconds, rounded down.
std::chrono::milliseconds TimeSince(std::chrono::steady_clock::time_point start);

}  // namespace lab
