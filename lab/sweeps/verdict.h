#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lab/sweeps/fault.h"
#include "lab/sweeps/given_values.h"
#include "lab/sweeps/migration_steps.h"
#include "lab/sweeps/rules_oracle.h"

namespace lab::sweeps {

/// What the runs on a device are judged by: what the rules make of it when one service fails, as the
/// program's own sources have them, and what has to hold whatever those say.
struct Measure {
  Device device;
  RulesOracle oracle;
  std::vector<MigrationStep> steps;
  GivenValues values;
};

/// `calls` is the record of an undisturbed run. Throws std::runtime_error when that run does not make the
/// steps in their order.
Measure TakeMeasure(const Device& device, RulesOracle oracle, const std::vector<SystemCall>& calls);

/// The channels of a failure report on which lines may be lost.
struct LostLines {
  bool log = false;
  bool standard_error = false;
};

/// Those that a fault falls on.
LostLines LinesLostBy(const Fault& fault);

/// Whether a run that met `fault` ended well. Gives what is wrong in words, or nothing.
std::optional<std::string> FindWrong(const Measure& measure, const Fault& fault, const Outcome& outcome);

/// Whether a run in which more than one thing went wrong ended well: with status 0 and all steps made, or
/// with status 1, its failure line and the first steps made; with documents of which each value is one that
/// the rules give; and with nothing beside them, unless `may_leave_temporary`.
std::optional<std::string> FindWrongEnd(const Measure& measure, const LostLines& lost, const Outcome& outcome,
                                        bool may_leave_temporary = false);

/// Whether the run ended where the step is that `fault`, which is a failed step's, let fail.
std::optional<std::string> FindWrongFailure(const Measure& measure, const Fault& fault,
                                            const Outcome& outcome);

}  // namespace lab::sweeps
