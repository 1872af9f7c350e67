#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "lab/sweeps/migration_run.h"
#include "lab/sweeps/trial.h"
#include "lab/sweeps/verdict.h"

namespace lab::sweeps {

/// `count` trials of two faults each, drawn with `seed`: a failed call of the recorded run and, behind it,
/// another one of what the run becomes by that. `measure`, `programs` and `calls` have to live as long as the
/// trials.
std::vector<Trial> PairTrials(const Measure& measure, const Programs& programs,
                              const std::vector<SystemCall>& calls, std::size_t count, std::uint64_t seed);

}  // namespace lab::sweeps
