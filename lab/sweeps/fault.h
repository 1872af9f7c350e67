#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lab::sweeps {

/// One thing that goes wrong in a run.
struct Fault {
  enum class Kind {
    Error,           // the call fails with `error`
    Nothing,         // the call, a write, takes nothing and gives 0
    ShortTransfer,   // the call moves at most `bytes` bytes
    ShortTransfers,  // every transfer from the call at `ordinal` (of all calls, from 1) on moves at most
                     // `bytes` bytes
    NoMemory,        // from that call on the kernel has no memory to give
  };
  /// What the run owes its caller beside ending well.
  enum class Duty {
    None,
    Fail,        // the run ends there, with status 1 and a failure line that holds `reason`
    Forgive,     // the run ends as the undisturbed one: at most a fall-back is in what it wrote
    Tell,        // either of both, and a fall-back is logged; the end, where it lasts
    SameResult,  // nothing at all may come out differently
  };
  /// Which of the two channels of a failure report the call belongs to.
  enum class Channel { None, Log, StandardError };

  Kind kind = Kind::Error;
  std::string call;
  int ordinal = 0;
  std::string error;
  std::size_t bytes = 0;
  bool lasting = false;  // of an error or nothing: so do all later calls of this name
  Duty duty = Duty::None;
  std::vector<std::string> reason;  // the first text begins the reason of the failure, the others are in it
  std::size_t steps_before = 0;     // of the migration, that the run made before this call
  Channel channel = Channel::None;
  std::string subject;  // as SubjectOf gives it: tells whether a later run's call is the one that was meant
  std::string place;    // the file or folder that the call is about, as a service names it; empty for none
};

/// "read:12:EIO", "read:12+:EIO" for one that lasts, "write:3:nothing", "write:3:short=1", "all:117:short=1",
/// "memory:140:refused".
std::string NameOf(const Fault& fault);

/// "read EIO", "read for good", "write short": by what faults are counted.
std::string KindOf(const Fault& fault);

/// Whether strace makes the fault happen; otherwise the lab's own helper does.
bool IsOfStrace(const Fault& fault);

/// strace's options that make the fault happen. Throws std::logic_error for one that is not strace's.
std::vector<std::string> InjectionOf(const Fault& fault);

/// The command that is put before the program to make the fault happen; `tamper` is the path of the lab's own
/// helper. strace writes its record to `record`.
std::vector<std::string> WrapperOf(const Fault& fault, const std::string& strace, const std::string& tamper,
                                   const std::string& record);

}  // namespace lab::sweeps
