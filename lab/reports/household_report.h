#pragma once

#include <string>
#include <vector>

#include "lab/household/findings.h"
#include "lab/household/settings.h"
#include "lab/reports/discretion.h"
#include "lab/runs/outcome.h"
#include "lab/runs/program_run.h"

namespace lab {

/// What a report tells of one run on one household, with discretion: nothing in it is more than may be shown.
/// Texts are bytes as the device had them.
struct HouseholdReport {
  /// A network on one radio, or a radio.
  struct Part {
    int frequency = 0;
    /// Its access-point file.
    std::string file;
    std::vector<Setting> settings;
  };
  struct Network {
    std::string name;
    bool is_guest = false;
    std::vector<Setting> settings;
    /// All bands first.
    std::vector<Part> radios;
  };
  struct FilterProfile {
    int id = 0;
    std::string name;
    std::string policy;
    Json::Value devices;
  };
  /// All findings of one kind that have the same cause.
  struct FindingGroup {
    const FindingKind* kind = nullptr;
    /// The kind of the finding that these follow from; null if they stand for themselves.
    const FindingKind* cause = nullptr;
    std::vector<std::string> places;
  };
  struct Message {
    int number = 0;
    int severity = 0;
    std::string text;
    /// What the line means for this household; empty for a line that has no meaning of its own.
    std::string effect;
  };

  std::string image;
  std::string from;
  Outcome outcome = Outcome::UnusableImage;
  int status = -1;
  int signal = 0;
  std::string error;
  std::string out;
  std::string err;
  std::vector<Setting> device;
  std::vector<Network> networks;
  std::vector<Part> radios;
  std::vector<Setting> wps;
  std::vector<FilterProfile> filters;
  std::vector<FindingGroup> findings;
  std::vector<Message> log;
  TreeDiff files;
};

/// The report of a run on `image` from the build `from`.
HouseholdReport Tell(const std::string& image, const std::string& from, const RunResult& run,
                     const Discretion& discretion);

}  // namespace lab
