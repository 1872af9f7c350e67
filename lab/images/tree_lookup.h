#pragma once

#include <string>

#include "lab/images/tree.h"

namespace lab {

/// The regular file that a program on the device finds at `path`, links on the way followed as there; null
/// where it finds none.
const Entry* FindFile(const Tree& tree, const std::string& path);

}  // namespace lab
