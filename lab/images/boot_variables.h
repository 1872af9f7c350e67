#pragma once

#include "lab/images/boot_environment.h"
#include "lab/images/tree.h"

namespace lab {

/// Sets variables of a device's boot environment, in the file and at the offsets that its /etc/fw_env.config
/// names; in both copies if it is kept twice. The other variables stay, unless the environment cannot be
/// read: then there are none. A device without that file gets an environment as InstallBootEnvironment makes
/// it. Throws UnusableImage if the variables cannot be stored.
void SetBootVariables(Tree& device, const BootVariables& variables);

}  // namespace lab
