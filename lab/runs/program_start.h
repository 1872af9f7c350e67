#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/runs/program_mounts.h"
#include "lab/runs/program_run.h"

namespace lab {

/// A pair of connected sockets on which the process that is to become the program reports to the one that
/// waits. They close when the program starts.
struct StartReport {
  StartReport();

  Descriptor waiting;
  Descriptor starting;
};

/// What a program is started with.
struct ProgramStart {
  const PrivateRoot& root;
  const RunOptions& options;
  const std::vector<HostMount>& mounts;
  /// The program or its wrapper, a path inside the root, and the arguments.
  const std::vector<std::string>& command;
  int standard_input;
  int standard_output;
  int standard_error;
  int report;
  /// The process that waits for the program, and without which it is not to run.
  pid_t starter;
};

/// Turns this process, made with fork(2) for it, into the program inside its root. Reports the own file
/// systems, and what failed.
[[noreturn]] void BecomeProgram(const ProgramStart& start) noexcept;

/// Waits until the program runs; gives the own file systems by their device paths. Throws std::runtime_error
/// with what failed.
std::map<std::string, Descriptor> AwaitStart(const Descriptor& report);

/// Moves a descriptor out of the range that a program's standard streams are put in.
Descriptor AboveStandardStreams(Descriptor descriptor);

}  // namespace lab
