#pragma once

#include <filesystem>

#include "lab/images/private_root.h"

namespace lab::commands {

/// A folder for a device that is to be kept: makes it, of mode 0700. One that stands already has to be empty.
/// Throws std::runtime_error.
void MakeKeptDevice(const std::filesystem::path& folder);

/// Copies all of the device into it.
void KeepDevice(const PrivateRoot& device, const std::filesystem::path& folder);

}  // namespace lab::commands
