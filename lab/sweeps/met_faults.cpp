#include "lab/sweeps/met_faults.h"

#include <algorithm>

namespace lab::sweeps {

bool IsMet(const Fault& fault, const std::vector<SystemCall>& calls) {
  return std::any_of(calls.begin(), calls.end(), [&](const SystemCall& call) {
    return call.injected && call.name == fault.call && call.ordinal == fault.ordinal &&
           SubjectOf(call) == fault.subject;
  });
}

bool IsMet(const Fault& fault, const MigrationRun& run) {
  if (!IsOfStrace(fault)) return true;
  const auto record = run.scratch.find(kRecord);
  return record != run.scratch.end() && IsMet(fault, ParseRecord(record->second.content));
}

}  // namespace lab::sweeps
