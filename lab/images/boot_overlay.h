#pragma once

#include "lab/images/boot_environment.h"
#include "lab/images/private_root.h"

namespace lab {

/// Sets variables of a device's boot environment, in the file and at the places that its /etc/fw_env.config
/// names; both copies where it is kept twice. The other variables stay, unless the environment cannot be
/// read: then there are none. A device without that file is given an environment as InstallBootEnvironment
/// makes it. Throws UnusableImage where the variables cannot be stored.
void LayBootVariables(PrivateRoot& root, const BootVariables& variables);

}  // namespace lab
