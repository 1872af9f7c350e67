#pragma once

#include <optional>
#include <string>

#include "lab/images/tree.h"

namespace lab {

/// The path that `path` leads to on the device, with every link on the way followed. What does not exist
/// stays as it is. None if the links go round in a circle.
std::optional<std::string> ResolvePath(const Tree& tree, const std::string& path);

/// The regular file that a program on the device finds at `path`; null if there is none.
const Entry* FindFile(const Tree& tree, const std::string& path);

}  // namespace lab
