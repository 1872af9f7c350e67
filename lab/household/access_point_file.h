#pragma once

#include <string>

#include "lab/images/tree.h"

namespace lab {

/// The path of the legacy file that holds the settings of the radio `frequency` (its number in the documents,
/// 0 for all bands), as the device's kernel entries name it. `is_orchid` tells the model whose entries count
/// otherwise. Empty where the kernel entry is missing.
std::string AccessPointFile(const Tree& device, bool is_orchid, int frequency);

}  // namespace lab
