#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "lab/fleets/device_source.h"
#include "lab/fleets/record.h"
#include "lab/images/tree.h"
#include "lab/images/tree_builder.h"
#include "lab/runs/program_run.h"
#include "lab/runs/workbench.h"

namespace lab::fleets {

/// How every device of a fleet is rehearsed.
struct RehearsalOptions {
  std::filesystem::path program;
  std::chrono::milliseconds limit = std::chrono::seconds(10);
  ImageLimits image_limits{};
  /// Folders laid over every image, in this order; what a list gives comes last.
  std::vector<std::filesystem::path> overlays{};
  /// Adds the household before and after to the records.
  bool with_household = false;
};

/// Requires overlays that can be laid out: with one that cannot, every device would count as unusable. Throws
/// UnusableImage.
void RequireOverlays(const RehearsalOptions& options);

/// Rehearses device after device in a process of its own (ForkSealed).
class DeviceRehearsal {
 public:
  explicit DeviceRehearsal(RehearsalOptions options) : options_(std::move(options)) {}

  /// What became of the device. Throws std::exception where the host, not the image, is at fault.
  Record Rehearse(const DeviceSource& source);

  /// As above, with the run itself; without one where the image could not be used.
  Record Rehearse(const DeviceSource& source, RunResult& run);

 private:
  Tree Read(const DeviceSource& source) const;
  void LayOut(const Tree& device);
  void ClearWorkbench();
  void MakeWorkbench(Workbench::Fittings fittings);

  RehearsalOptions options_;
  std::unique_ptr<Workbench> bench_;
};

}  // namespace lab::fleets
