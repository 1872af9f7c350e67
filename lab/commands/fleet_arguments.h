#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "lab/commands/arguments.h"
#include "lab/fleets/fleet.h"

namespace lab::commands {

/// What the sub-commands that go through many devices have in common.
struct FleetArguments {
  std::vector<std::string> images;
  std::string from;
  std::vector<std::filesystem::path> overlays;
  unsigned jobs = 1;
  double limit_seconds = 10;
  ImageArguments image;
};

/// Adds the arguments, all but the program.
void AddFleetArguments(CLI::App& command, FleetArguments& arguments);

/// The options that they amount to, without output and conditions. Throws std::invalid_argument.
fleets::FleetOptions ToFleetOptions(const FleetArguments& arguments);

/// What `work` gives, or kNotDone, with a line on standard error, where it throws or what it printed got
/// lost.
int StatusOf(const std::function<int()>& work);

}  // namespace lab::commands
