#pragma once

#include <string>
#include <string_view>

#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

/// An outcome as bytes, to be handed from one process to another.
std::string ToText(const Outcome& outcome);
Outcome FromText(std::string_view text);

/// Where `other` differs from `expected`, in words, one line for each place.
std::string Difference(const Outcome& expected, const Outcome& other);

}  // namespace lab::sweeps
