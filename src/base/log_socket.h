#pragma once

#include <cstddef>

#include "base/wait_budget.h"

namespace KELP::Wifi {

/// What became of a message.
enum class LogResult {
  Taken,
  Lost,     // nobody listens
  NoRoom,   // the daemon did not read in time; of a stream it may have a part
  TooLong,  // the socket does not take so long a one
};

/// Sends the `size` bytes at `message`, and the NUL that has to follow them, to whoever listens at
/// "/dev/log": as a datagram, or to a daemon that takes streams with the NUL as its end. Where there is no
/// room at once, for as long as `wait` lasts. Needs no memory.
///
/// The socket is kept, the daemon looked up again with every message: one that was restarted is found.
LogResult SendToLog(const char* message, std::size_t size, OutputWait& wait) noexcept;

}  // namespace KELP::Wifi
