#pragma once

#include <json/value.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <filesystem>
#include <vector>

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

/// The program to run, where a command takes one.
struct ProgramArguments {
  std::filesystem::path program;
  bool is_trusted = false;
};

void AddProgramArguments(CLI::App& command, ProgramArguments& arguments);
/// The part for commands that name their programs in another way.
void AddTrustArgument(CLI::App& command, bool& is_trusted);

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

/// Makes this process one that may run these programs on devices, and says on standard error what that does
/// not keep apart where it has to be done the plain way. There, a program that is not the one that
/// ProgramToRun finds by itself has to be trusted.
void BecomeRunner(const std::vector<std::filesystem::path>& programs, bool are_trusted);

/// For --json: what the plain way does not keep apart.
Json::Value NotKeptApart();

}  // namespace lab::commands
