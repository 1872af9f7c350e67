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
    ShortTransfer,   // the call moves at most `bytes` bytes
    ShortTransfers,  // every transfer from the call at `ordinal` (of all calls, from 1) on moves at most
                     // `bytes` bytes
    NoMemory,        // from that call on the kernel has no memory to give
  };
  /// What the run owes its caller beside ending well.
  enum class Duty {
    None,
    Fail,        // the call was a step of the migration: without it the run may not report success
    SameResult,  // the call can be repeated: nothing at all may come out differently
  };
  /// Which of the two channels of a failure report the call belongs to.
  enum class Channel { None, Log, StandardError };

  Kind kind = Kind::Error;
  std::string call;
  int ordinal = 0;
  std::string error;
  std::size_t bytes = 0;
  Duty duty = Duty::None;
  Channel channel = Channel::None;
  std::string subject;  // as SubjectOf gives it: tells whether a later run's call is the one that was meant
  std::string place;    // the file or folder that the call is about, as a service names it; empty for none
};

/// "read:12:EIO", "write:3:short=1", "all:117:short=1", "memory:140:refused".
std::string NameOf(const Fault& fault);

/// "read EIO", "write short": by what faults are counted.
std::string KindOf(const Fault& fault);

/// The command that is put before the program to make the fault happen; `tamper` is the path of the lab's own
/// helper. strace writes its record to `record`.
std::vector<std::string> WrapperOf(const Fault& fault, const std::string& strace, const std::string& tamper,
                                   const std::string& record);

}  // namespace lab::sweeps
