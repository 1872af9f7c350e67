#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "lab/sweeps/migration_run.h"
#include "lab/sweeps/trial.h"
#include "lab/sweeps/verdict.h"

namespace lab::sweeps {

/// What the kernel may limit for a program, and the values that are tried, from nothing to plenty.
struct LimitRange {
  std::string resource;  // as the helper names it
  std::vector<std::uint64_t> values;
};

/// The size of a file, the address space, the data, the descriptors and the stack.
std::vector<LimitRange> LimitRanges();

/// A trial for each value: the run ends with a defined outcome, or before it comes to the program's main, in
/// which case nobody has touched the device; with plenty of everything it ends as without a limit. `measure`
/// and `programs` have to live as long as the trials.
std::vector<Trial> LimitTrials(const Measure& measure, const Programs& programs);

/// Whether a run ended as it must that got so much of the resource.
TrialResult JudgeLimited(const Measure& measure, const std::string& resource, std::uint64_t value,
                         bool is_plenty, const Outcome& outcome);

}  // namespace lab::sweeps
