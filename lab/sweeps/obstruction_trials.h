#pragma once

#include <string>
#include <vector>

#include "lab/sweeps/migration_run.h"
#include "lab/sweeps/trial.h"
#include "lab/sweeps/verdict.h"

namespace lab::sweeps {

/// Trials of services that neither work nor fail: a log socket that nobody reads, standard streams that are
/// full pipes nobody reads, a lock of the boot environment that somebody else keeps, and all of them. Each
/// run ends within the time that any run has, as if nothing were the matter but for the lines that are lost
/// and the fall-back of the boot environment. `measure` and `programs` have to live as long as the trials.
std::vector<Trial> ObstructionTrials(const Measure& measure, const Programs& programs);

/// Whether a run that met the obstruction ended as it must.
TrialResult JudgeObstructed(const Measure& measure, const Obstruction& obstruction, const Outcome& outcome);

}  // namespace lab::sweeps
