#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/images/tree.h"
#include "lab/runs/log_collector.h"

namespace lab {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitizedBuild = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kSanitizedBuild = true;
#else
inline constexpr bool kSanitizedBuild = false;
#endif
#else
inline constexpr bool kSanitizedBuild = false;
#endif

/// A machine of another kind than the host, for programs that are built for it.
struct ForeignMachine {
  /// Runs the machine's programs on the host, is linked statically, and takes the program's path and
  /// arguments.
  std::filesystem::path emulator;
  /// The folder that holds the machine's libraries in lib and usr/lib.
  std::filesystem::path libraries;
};

/// What the program finds at its standard streams.
enum class Console {
  Collected,  // an empty input, and two pipes that are read
  Closed,     // nothing at all
  Broken,     // pipes whose reading end is closed
  Full,       // full pipes that nobody reads
};

/// How a program is run; the defaults are those of an ordinary run on a device.
struct RunOptions {
  /// Gives the program the host's /proc, with the device's own entries (and no others) in /proc/sys/kernel.
  /// Sanitized programs and valgrind need it. What the program writes into /proc/sys/kernel is lost. Without
  /// it, /proc has just the files of the device image.
  bool with_proc = kSanitizedBuild;
  /// Runs without the capabilities that let root read, write and chmod what file modes deny it.
  bool drop_file_privileges = false;
  /// Folders of the device that get a file system of their own, with its size in bytes (the kernel rounds up
  /// to whole pages): a small one is soon full. It starts with the folder's entries, and what it holds at the
  /// end stands in the folder after the run.
  std::map<std::string, std::uintmax_t> tmpfs{};
  /// A command before the program: strace or valgrind with their options. It runs inside the root with the
  /// host's programs at hand, and writes its files there. A name without a slash is that of a program in
  /// /usr/bin.
  std::vector<std::string> wrapper{};
  /// The host's programs that a wrapper starts, by their paths: the plain way copies just those.
  std::vector<std::string> host_programs{};
  /// Set for a program that the host cannot run itself; goes without a wrapper.
  std::optional<ForeignMachine> machine{};
  /// "NAME=value" each.
  std::vector<std::string> environment{"PATH=/usr/sbin:/usr/bin:/sbin:/bin"};
  /// The program is killed when it has not ended by then.
  std::chrono::milliseconds timeout = std::chrono::seconds(60);
  mode_t umask = 022;
  Console console = Console::Collected;
  /// A RLIMIT_ constant and its value, for the soft and the hard limit.
  std::vector<std::pair<int, rlim_t>> rlimits{};
  std::string cwd = "/";
  /// Without it nothing listens at /dev/log.
  bool collect_log = true;
  /// Leaves the socket at /dev/log without room for a single line, and unread: whoever waits for it waits for
  /// ever. The result has no log then.
  bool stuck_log = false;
};

/// What a run did.
struct RunResult {
  /// The exit status; -1 when a signal ended the program.
  int status = -1;
  /// The signal that ended the program, or 0.
  int signal = 0;
  bool timed_out = false;
  /// From the program's start to its end.
  std::chrono::milliseconds duration{0};
  /// Empty unless the console was collected.
  std::string out;
  std::string err;
  std::vector<LogLine> log;
  /// The device, as PrivateRoot::Snapshot gives it.
  Tree before;
  Tree after;
};

/// A run that the plain way cannot give what it asks for.
class NeedsMounts : public std::runtime_error {
 public:
  explicit NeedsMounts(const std::string& what)
      : std::runtime_error(what + " takes mounts, which this container does not let a process make") {}
};

/// Runs `program` (a file of the host) as /usr/sbin/<its name> with the private root as its root folder, and
/// waits for its end. Standard input is empty. The host's library folders are there to be read, in a mount
/// namespace of the run's own, so that the private root itself never has anything mounted in it. Whatever the
/// program leaves running in its process group is killed. In the plain way the program and its libraries are
/// copied into the root for as long as it runs, and all that it leaves running is killed.
///
/// Works as root, after EnterNamespaces(), and in a process with one or more threads; not from inside a root.
/// Throws std::runtime_error when the program cannot be started at all, with the reason, NeedsMounts before
/// that.
RunResult RunProgram(PrivateRoot& root, const std::filesystem::path& program,
                     const std::vector<std::string>& arguments, const RunOptions& options = {});

}  // namespace lab
