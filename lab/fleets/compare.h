#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "lab/fleets/fleet.h"
#include "lab/runs/program_run.h"

namespace lab::fleets {

/// Something that one version of the program makes otherwise than the other. Holds no secret.
struct Difference {
  /// "outcome", "error", "log", "archived", a document's setting as
  /// "network.json.default[1].featureSettings[0].ssid", or the path of another file.
  std::string what;
  /// As JSON texts; empty where there is none.
  std::string was;
  std::string now;

  bool operator==(const Difference&) const = default;
};

/// What differs between two runs on the same image, setting by setting.
std::vector<Difference> Compare(const Record& old_record, const RunResult& old_run, const Record& new_record,
                                const RunResult& new_run);

/// A device and what differs there.
struct ComparedDevice {
  std::string image;
  std::string from;
  std::vector<Difference> differences;
};

/// Runs both programs on each device; options as of a fleet, without the output. Calls `tell` with each
/// device, as soon as it is known. Gives whether all were compared: an image that neither program can be
/// tried on is not. Throws as RehearseFleet does.
bool CompareFleet(const FleetOptions& options, const std::filesystem::path& old_program,
                  const std::filesystem::path& new_program,
                  const std::function<void(const ComparedDevice&)>& tell, std::ostream& messages);

/// One JSON object on one line, without its end.
std::string ComparedLine(const ComparedDevice& device);

}  // namespace lab::fleets
