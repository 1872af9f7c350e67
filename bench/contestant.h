#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/program_run.h"

namespace bench {

/// One of the programs that are measured side by side.
struct Contestant {
  std::string name;
  std::filesystem::path program;
  std::vector<std::string> arguments;
  /// What it needs on the device beside the image: bytes by device path.
  std::map<std::string, std::string> files;
  /// What of the image it goes without, by device path.
  std::vector<std::string> missing{};
  /// The status that it ends with there.
  int status = 0;
};

/// A device image, and the build number that it is updated from.
struct Device {
  std::filesystem::path image;
  std::string build_number;
};

/// The folder of the running program, where the contestants lie too.
std::filesystem::path ProgramFolder();

/// The program itself.
Contestant MakeProgram(const Device& device);
/// The shell script that does the same.
Contestant MakePeer();
/// The program that links the same libraries and does nothing.
Contestant MakeEmpty();
/// The bare file operations: reads `inputs` once each, and leaves behind what `run`, one of the program's,
/// left.
Contestant MakeFloor(const std::vector<std::string>& inputs, const lab::RunResult& run);

/// The wrapper of a run that needs none.
inline const std::vector<std::string> kNoWrapper{"/usr/bin/env"};

/// The contestant on a household that has set next to nothing: its access-point files are there and empty.
Contestant OnSparseDevice(const std::filesystem::path& image, Contestant contestant);
/// The contestant on a household without any access-point file, which the archive then misses.
Contestant OnBareDevice(const std::filesystem::path& image, Contestant contestant);

/// A new device from the image, ready for the contestant.
lab::PrivateRoot MakeRoot(const std::filesystem::path& image, const Contestant& contestant);

/// Runs the contestant behind `wrapper`. All of them find the same in the root, the host's programs too.
/// Throws std::runtime_error, with what it printed, when it fails.
lab::RunResult RunContestant(lab::PrivateRoot& root, const Contestant& contestant,
                             const std::vector<std::string>& wrapper, bool with_proc = false);

}  // namespace bench
