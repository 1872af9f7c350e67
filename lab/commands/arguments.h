#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <filesystem>

#include "lab/images/tree_builder.h"

namespace lab::commands {

/// The program's name in the build folder and on the device.
inline constexpr const char* kProgramName = "kelpwifiupdater";

/// The exit status of a command that could not do its work.
inline constexpr int kNotDone = 2;

/// What an image is, where a command takes one.
inline constexpr const char* kImageHelp =
    "A folder that mirrors a device's files, or a tar archive of one (plain, gzip, xz, zstd); it is only "
    "read";

/// How much an image may hold.
struct ImageArguments {
  unsigned megabytes = 64;
  std::size_t entries = 20'000;
};

void AddImageArguments(CLI::App& command, ImageArguments& arguments);
ImageLimits ToImageLimits(const ImageArguments& arguments);

// What several sub-commands ask of their arguments. All throw std::runtime_error, saying what is wrong.

/// Requires that something stands there.
void RequireImage(const std::filesystem::path& image);

/// The program to run: the one named, or where none is named the one beside devicelab, or in the sbin folder
/// beside its own, as they are installed.
std::filesystem::path ProgramToRun(const std::filesystem::path& named);

/// Makes this process one that may run programs on devices.
void BecomeRunner();

}  // namespace lab::commands
