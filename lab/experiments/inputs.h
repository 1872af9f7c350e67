#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lab/images/tree.h"

namespace lab {

/// A device with one file otherwise.
struct Variation {
  std::string path;
  /// The file's bytes; none where it is removed.
  std::optional<std::string> content;
};

/// Something on a device that the program may read: an entry of a legacy file, a whole file, a variable of
/// the boot environment.
struct Input {
  /// The file that it stands in, or the boot environment's file.
  std::string file;
  /// The key, "[section] key", the member of a JSON file, the variable; empty for a whole file.
  std::string entry;
  /// The device without it, and with it changed in some ways that tell.
  std::vector<Variation> variations;
};

/// All inputs of a device, by files and lines. The archive and documents that are there already are none.
std::vector<Input> InputsOf(const Tree& device);

}  // namespace lab
