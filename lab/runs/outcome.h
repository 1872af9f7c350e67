#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lab/runs/log_collector.h"
#include "lab/runs/program_run.h"

namespace lab {

/// How the rehearsal of one device ended.
enum class Outcome {
  Migrated,
  /// Migrated, and the log tells of a value that a fixed one stands in for.
  MigratedWithFallbacks,
  /// New documents were there before.
  Skipped,
  /// The old build was new enough.
  NothingToDo,
  /// The program gave another status than 0.
  Failed,
  /// A signal ended the program.
  Crashed,
  TimedOut,
  /// The image lacks what every device has and no backup holds, and the program failed for it.
  IncompleteImage,
  /// The image cannot be read; the program did not run.
  UnusableImage,
};

/// All of them, in the order above.
const std::vector<Outcome>& AllOutcomes();

/// "migrated-with-fallbacks" and so on.
std::string_view OutcomeName(Outcome outcome);

/// The outcome of that name, if there is one.
std::optional<Outcome> OutcomeNamed(std::string_view name);

/// A line of the program's log: "kelpwifiupdater:760 Invalid security mode: ..." has the number 760 and the
/// text behind it. A line of another form has the number 0 and all of its text.
struct NumberedLine {
  int number = 0;
  /// 0 (LOG_EMERG) to 7 (LOG_DEBUG).
  int severity = 0;
  /// Any bytes.
  std::string text;

  bool operator==(const NumberedLine&) const = default;
};

NumberedLine ParseNumberedLine(const LogLine& line);

/// What a run comes to.
struct Verdict {
  Outcome outcome = Outcome::UnusableImage;
  /// What the program said on standard error, without the line end; of an incomplete image which part is
  /// lacking, of an unusable one why. May hold secrets, as the log may.
  std::string error;
  std::vector<NumberedLine> log;
};

/// Judges a run by how it ended, its log, and what its image held.
Verdict Judge(const RunResult& result);

}  // namespace lab
