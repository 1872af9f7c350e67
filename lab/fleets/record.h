#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lab/runs/outcome.h"

namespace lab::fleets {

/// What is known of the rehearsal of one device: a line of a fleet's file. Holds no secret.
struct Record {
  /// The image's name and the build number, which together tell one device from another.
  std::string image;
  std::string from;
  Outcome outcome = Outcome::UnusableImage;
  /// None where the program was ended by a signal or did not run.
  std::optional<int> status;
  std::optional<int> signal;
  /// Of the run, or why there was none.
  std::string error;
  std::vector<NumberedLine> log;
  /// Device paths of the documents that the run wrote or changed.
  std::vector<std::string> documents;
  /// The former device paths of the files that it moved to the archive.
  std::vector<std::string> archived;
  /// Ids of the findings, each once.
  std::vector<std::string> findings;
  /// How long the program ran.
  std::int64_t milliseconds = 0;
  /// The household before and after, as a JSON text; empty where it was not asked for.
  std::string household;
};

/// The record as one line of JSON, without the line's end.
std::string RecordLine(const Record& record);

/// Reads a line that RecordLine wrote. Gives none for anything else.
std::optional<Record> ParseRecord(std::string_view line);

}  // namespace lab::fleets
