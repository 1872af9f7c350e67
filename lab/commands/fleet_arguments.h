#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "lab/fleets/fleet.h"

namespace lab::commands {

/// What the sub-commands that go through many devices have in common.
struct FleetArguments {
  std::vector<std::string> images;
  std::string from;
  std::filesystem::path program;
  std::vector<std::filesystem::path> overlays;
  unsigned jobs = 1;
  double limit_seconds = 10;
  unsigned megabytes = 64;
  std::size_t entries = 20'000;
};

/// Adds the arguments, all but the program.
void AddFleetArguments(CLI::App& command, FleetArguments& arguments);

/// The options that they amount to, without output and conditions.
fleets::FleetOptions ToFleetOptions(const FleetArguments& arguments);

/// The exit status of a command that could not do its work.
inline constexpr int kNotDone = 2;

/// What `work` gives, or that status, with a line on standard error, where it throws.
int StatusOf(const std::function<int()>& work);

}  // namespace lab::commands
