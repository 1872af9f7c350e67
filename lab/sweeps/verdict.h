#pragma once

#include <optional>
#include <string>

#include "lab/sweeps/fault.h"
#include "lab/sweeps/rules_oracle.h"

namespace lab::sweeps {

/// Whether a run on `device` that met `fault` ended well. Gives what is wrong in words, or nothing.
std::optional<std::string> FindWrong(const Device& device, const Fault& fault, const RulesOracle& oracle,
                                     const Outcome& outcome);

}  // namespace lab::sweeps
