#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "lab/experiments/inputs.h"
#include "lab/images/tree.h"
#include "lab/runs/program_run.h"

namespace lab {

/// What moved when an input of a device was removed or changed.
struct Effect {
  std::string file;
  /// As an Input names it.
  std::string entry;
  /// Members of the documents: "network.json.default[1].featureSettings[0].security".
  std::set<std::string> members;
  /// What else is not the same, in words: how the update ends, what is archived, what is logged.
  std::set<std::string> otherwise;

  bool IsNone() const { return members.empty() && otherwise.empty(); }
};

/// Runs `program` on a device in a private root of its own, from the build `from`.
RunResult RunOn(const Tree& device, const std::filesystem::path& program, const std::string& from);

/// Tries each of `inputs`, which are those of `device`: runs `program` from the build
/// `from` without it and with it changed, and compares with the run on the device as it is. In
/// `workers` processes (ParallelMap), each device in a private root. In the order of the inputs.
std::vector<Effect> FindEffects(const Tree& device, const std::vector<Input>& inputs,
                                const std::filesystem::path& program, const std::string& from,
                                unsigned workers);

}  // namespace lab
