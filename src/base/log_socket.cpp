#include "base/log_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>

#include "base/file_descriptor.h"
#include "base/wait_budget.h"

namespace KELP::Wifi {
namespace {

constexpr sockaddr_un kDaemon{AF_UNIX, "/dev/log"};
constexpr int kNone = -1;

// Plain numbers: what a run ends with is closed by its end.
int datagrams = kNone;
int stream = kNone;

const sockaddr* DaemonsAddress() {
  return reinterpret_cast<const sockaddr*>(&kDaemon);
}

/// Lets a blocking call on `socket` wait for as long as there is patience. False when there is none.
bool BoundWaiting(int socket, const OutputWaitBudget& budget) noexcept {
  const auto left = budget.Remaining().count();
  if (left == 0) return false;
  const timeval limit{.tv_sec = left / 1'000'000, .tv_usec = left % 1'000'000};
  return ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

/// Calls `send` with the flags for not waiting and, where nobody has room, again with those for waiting.
template <typename Send>
ssize_t SendPatiently(int socket, Send send) noexcept {
  const ssize_t sent = RetryInterrupted([&] { return send(MSG_NOSIGNAL | MSG_DONTWAIT); });
  if (sent >= 0 || errno != EAGAIN) return sent;
  const OutputWaitBudget budget;
  return RetryInterrupted([&]() -> ssize_t {
    if (BoundWaiting(socket, budget)) return send(MSG_NOSIGNAL);
    errno = EAGAIN;
    return -1;
  });
}

bool SendDatagram(const char* message, std::size_t size) noexcept {
  if (datagrams == kNone) datagrams = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (datagrams == kNone) return false;
  return SendPatiently(datagrams, [&](int flags) {
           return ::sendto(datagrams, message, size, flags, DaemonsAddress(), sizeof kDaemon);
         }) >= 0;
}

void CloseStream() noexcept {
  ::close(stream);
  stream = kNone;
}

bool OpenStream() noexcept {
  stream = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (stream == kNone) return false;
  const OutputWaitBudget budget;
  if (!BoundWaiting(stream, budget)) ::fcntl(stream, F_SETFL, O_NONBLOCK);
  if (RetryInterrupted([] { return ::connect(stream, DaemonsAddress(), sizeof kDaemon); }) == 0) return true;
  CloseStream();
  return false;
}

/// False when there is no connection, or none any more.
bool SendOnStream(const char* message, std::size_t size) noexcept {
  if (stream == kNone) return false;
  const char* rest = message;
  for (std::size_t left = size + 1; left > 0;) {
    const ssize_t sent = SendPatiently(stream, [&](int flags) { return ::send(stream, rest, left, flags); });
    if (sent < 0) {
      const bool is_listening = errno == EAGAIN;
      // The end of the connection is what tells the daemon that a line it got in part is over.
      if (!is_listening || rest != message) CloseStream();
      return is_listening;
    }
    rest += sent;
    left -= static_cast<std::size_t>(sent);
  }
  return true;
}

}  // namespace

void SendToLog(const char* message, std::size_t size) noexcept {
  if (SendOnStream(message, size) || SendDatagram(message, size) || errno != EPROTOTYPE) return;
  if (OpenStream()) SendOnStream(message, size);
}

}  // namespace KELP::Wifi
