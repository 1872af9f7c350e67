#pragma once

#include <cstddef>

namespace KELP::Wifi {

/// Hands the `size` bytes at `message`, and the NUL that has to follow them, to whoever listens at
/// "/dev/log": as a datagram, or to a daemon that takes streams with the NUL as its end. Lost where nobody
/// listens, and where nobody reads for longer than the run's patience lasts. Needs no memory.
///
/// The socket is kept, the daemon looked for anew with every message: one that was restarted is found again.
void SendToLog(const char* message, std::size_t size) noexcept;

}  // namespace KELP::Wifi
