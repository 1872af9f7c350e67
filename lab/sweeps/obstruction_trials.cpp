#include "lab/sweeps/obstruction_trials.h"

#include <algorithm>

#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

struct Case {
  // cppcheck-suppress unusedStructMember  ; used below
  const char* name;
  Obstruction obstruction;
};

TrialResult Try(const Measure& measure, const Programs& programs, const Obstruction& obstruction) {
  Manner manner;
  manner.obstruction = obstruction;
  return JudgeObstructed(measure, obstruction, Migrate(measure.device, programs.migration, manner).outcome);
}

bool TellsOfBootEnvironment(const std::vector<std::string>& log) {
  return std::any_of(log.begin(), log.end(), [](const std::string& line) {
    return line.find("kelpwifiupdater:896 ") != std::string::npos;
  });
}

}  // namespace

TrialResult JudgeObstructed(const Measure& measure, const Obstruction& obstruction, const Outcome& outcome) {
  const LostLines lost{.log = obstruction.stuck_log, .standard_error = obstruction.full_console};
  if (auto wrong = FindWrongEnd(measure, lost, outcome)) return Wrong(*wrong);
  Outcome expected = measure.oracle.undisturbed;
  if (lost.log) expected.log.clear();
  if (lost.standard_error) expected.err.clear();
  if (!obstruction.held_lock) {
    return outcome == expected ? Well()
                               : Wrong("more was lost than lines:\n" + Difference(expected, outcome));
  }
  if (outcome.status != expected.status) return Wrong("the lock has changed the status");
  const bool asks = measure.device.build_number < kFirstBuildOf13;
  if (asks && !lost.log && !TellsOfBootEnvironment(outcome.log)) {
    return Wrong("nothing tells that the boot environment could not be opened");
  }
  return Well();
}

std::vector<Trial> ObstructionTrials(const Measure& measure, const Programs& programs) {
  const std::vector<Case> cases{{"log", {.stuck_log = true}},
                                {"console", {.full_console = true}},
                                {"lock", {.held_lock = true}},
                                {"all", {.stuck_log = true, .full_console = true, .held_lock = true}}};
  std::vector<Trial> trials;
  for (const auto& [name, obstruction] : cases) {
    const std::string text = std::string("blocked:") + name;
    trials.push_back({text, std::string("blocked ") + name, "",
                      [=, &measure, &programs] { return Try(measure, programs, obstruction); }});
  }
  return trials;
}

}  // namespace lab::sweeps
