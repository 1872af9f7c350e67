#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "lab/sweeps/fault.h"
#include "lab/sweeps/migration_run.h"
#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// Whether a recorded run met the fault, at the call that was meant.
bool IsMet(const Fault& fault, const std::vector<SystemCall>& calls);

/// The same of a finished run: of strace's faults its record tells. A tamperer that had nothing to do ends
/// with a status that no run may have, so that a run with one has met its fault.
bool IsMet(const Fault& fault, const MigrationRun& run);

}  // namespace lab::sweeps
