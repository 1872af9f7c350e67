#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "lab/household/known_files.h"
#include "lab/images/tree.h"
#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// The programs that a sweep runs, all of them beside the sweep itself unless it is told otherwise.
struct Programs {
  std::filesystem::path migration;  // the program under test
  std::filesystem::path rules;      // the same with services that fail on order
  std::filesystem::path tamper;
  std::string strace = "/usr/bin/strace";

  /// Those in the folder of the running program, but `migration` in place of the one there where it is not
  /// empty. Throws std::runtime_error when the program under test or the tamperer is missing.
  static Programs BesideThisOne(const std::filesystem::path& migration = {});
};

/// How the line begins that the program writes to standard error when it fails, and what its log line tells
/// too.
inline constexpr const char* kFailureReport = "Failed to update config, error: ";

/// A device and the build number that it is updated from.
struct Device {
  Tree files;
  int build_number = 0;
};

/// What a run left behind, without the lab's own files and without the lock file of the boot environment.
struct Outcome {
  int status = -1;
  int signal = 0;
  bool timed_out = false;
  std::string out;
  std::string err;
  std::vector<std::string> log;  // "3: text", the number being the severity
  Tree files;

  bool operator==(const Outcome&) const = default;
};

/// What neither works nor fails while the program runs.
struct Obstruction {
  bool stuck_log = false;     // nobody reads the log socket, and it is full
  bool full_console = false;  // nobody reads the standard streams, and they are full
  bool held_lock = false;     // somebody else keeps the boot environment's lock
};

/// How the program is run.
struct Manner {
  std::vector<std::string> wrapper;
  std::vector<std::string> environment;
  Obstruction obstruction{};
  std::map<std::string, std::filesystem::path> helpers{};  // where on the device a program of the lab stands
};

inline constexpr const char* kTamper = "/tmp/tamper";
inline constexpr const char* kRecord = "/tmp/strace.record";

/// A finished run, and what it wrote to files in the device's "/tmp".
struct MigrationRun {
  Outcome outcome;
  Tree scratch;
};

/// The device as outcomes show it.
Tree WithoutLabFiles(const Tree& files);

/// Lets strace, with more options, record a whole run on the device and gives the record.
std::vector<SystemCall> RecordMigration(const Device& device, const Programs& programs,
                                        const std::vector<std::string>& options = {});

/// Reads a device image.
Device ReadDevice(const std::filesystem::path& image, int build_number);

/// Lays out a private root and lets `program` migrate it there.
MigrationRun Migrate(const Device& device, const std::filesystem::path& program, const Manner& manner = {});

}  // namespace lab::sweeps
