#include "lab/sweeps/fault_trials.h"

#include <optional>
#include <utility>

#include "lab/sweeps/fault_plan.h"
#include "lab/sweeps/met_faults.h"

namespace lab::sweeps {
namespace {

TrialResult Try(const Fault& fault, const Measure& measure, const Programs& programs) {
  Manner manner;
  manner.wrapper = WrapperOf(fault, programs.strace, kTamper, kRecord);
  if (!IsOfStrace(fault)) manner.helpers = {{kTamper, programs.tamper}};
  const MigrationRun run = Migrate(measure.device, programs.migration, manner);
  if (auto wrong = FindWrong(measure, fault, run.outcome)) return Wrong(*wrong);
  return IsMet(fault, run) ? Well() : Wrong("the run did not come to this call");
}

std::string CommandOf(const Fault& fault) {
  std::string command;
  for (const std::string& word : WrapperOf(fault, "strace", "tamper", "record")) command += word + " ";
  return command;
}

}  // namespace

std::vector<Trial> FaultTrials(const Measure& measure, const Programs& programs,
                               const std::vector<SystemCall>& calls) {
  std::vector<Trial> trials;
  for (const Fault& fault : PlanFaults(calls, FirstCallOfMain(calls))) {
    trials.push_back({NameOf(fault), KindOf(fault), CommandOf(fault),
                      [fault, &measure, &programs] { return Try(fault, measure, programs); }});
  }
  return trials;
}

}  // namespace lab::sweeps
