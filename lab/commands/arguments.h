#pragma once

#include <filesystem>

namespace lab::commands {

/// The program's name in the build folder and on the device.
inline constexpr const char* kProgramName = "kelpwifiupdater";

// What several sub-commands ask of their arguments. All throw std::runtime_error, saying what is wrong.

/// Requires a folder with a device's files in it.
void RequireImage(const std::filesystem::path& image);

/// The program to run: the one named, or where none is named the one beside devicelab, or in the sbin folder
/// beside its own, as they are installed.
std::filesystem::path ProgramToRun(const std::filesystem::path& named);

/// Makes this process one that may run programs on devices.
void BecomeRunner();

}  // namespace lab::commands
