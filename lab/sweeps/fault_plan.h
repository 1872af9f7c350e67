#pragma once

#include <cstddef>
#include <vector>

#include "lab/sweeps/fault.h"
#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// The faults that a run can meet: each call from `first` on (a place in `calls`) with each of its errors
/// (see ErrorsOf), and with one of them from there on; each write that takes nothing, once and for good; each
/// transfer cut short to one byte and to its half, all transfers one byte at a time, and no more memory from
/// each request for it on. Throws std::runtime_error for a call of which it is not known how it can fail:
/// nothing is left out silently.
std::vector<Fault> PlanFaults(const std::vector<SystemCall>& calls, std::size_t first);

}  // namespace lab::sweeps
