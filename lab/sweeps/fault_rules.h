#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/sweeps/fault.h"
#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// What a call of a recorded run is about.
struct CallSubject {
  std::string path;           // absolute, links not followed; empty where no file is known
  bool opens_new = false;     // makes a file that cannot have been there
  bool opens_folder = false;  // opens a folder
  bool uses_new = false;      // is given a file that the run made
  bool uses_folder = false;
};

/// What the requirements give, whatever the program's sources say, for a run in which one call fails.
struct FaultRule {
  Fault::Duty duty = Fault::Duty::None;
  /// What the failure line has to say: the first text at the beginning of the reason, the others anywhere.
  std::vector<std::string> reason{};
};

/// The rule for the failure of `call` with `error`: a name like "EIO", or empty where the call gives less
/// than it was asked for and no error.
FaultRule RuleFor(const SystemCall& call, const CallSubject& subject, std::string_view error);

/// How the failure line begins, and what it names, when the information store cannot be read: for the values
/// without which there is no migration.
const std::vector<std::string>& ReasonOfUnreadableStore();

/// Whether the log line is one of those which tell that a value of the information store could not be read,
/// and that its fall-back was taken.
bool TellsFallbackOfStore(std::string_view log_line);

}  // namespace lab::sweeps
