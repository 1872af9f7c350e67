#pragma once

#include <string>

#include "lab/household/run_view.h"

namespace lab {

/// The entry by which a device was a repeater of a mesh that is none after the run, as
/// "info.conf: mesh_network_role=RE"; empty where there is no such. The program knows the word "re" alone and
/// tells nothing of others.
std::string LostRepeaterRole(const RunView& view);

}  // namespace lab
