#pragma once

#include <vector>

#include "lab/sweeps/migration_run.h"
#include "lab/sweeps/trial.h"
#include "lab/sweeps/verdict.h"

namespace lab::sweeps {

/// A trial for each fault that the recorded run can meet. `measure` and `programs` have to live as long as
/// the trials.
std::vector<Trial> FaultTrials(const Measure& measure, const Programs& programs,
                               const std::vector<SystemCall>& calls);

}  // namespace lab::sweeps
