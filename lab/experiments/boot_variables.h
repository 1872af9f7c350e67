#pragma once

#include <vector>

#include "lab/experiments/inputs.h"

namespace lab {

/// The variables of the boot environment that /etc/fw_env.config names, each as an input; of a redundant one
/// those of the newer copy. None where there is no environment that can be read.
std::vector<Input> BootVariableInputs(const Tree& device);

}  // namespace lab
