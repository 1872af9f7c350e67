#include "base/log_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/unique_fd.h"

namespace KELP::Wifi {
namespace {

constexpr sockaddr_un kDaemon{AF_UNIX, "/dev/log"};
constexpr int kNone = -1;

// The kernel wakes a sender only once three quarters of its buffer have been read: so long a slow reader may
// have room before that is noticed. (Not shorter: who asks again goes to the end of the senders' queue.)
constexpr OutputWait::Time kLongestSleep = std::chrono::seconds(1);
// The kernel's bound is for each of the pieces in which a stream takes a message.
constexpr std::size_t kPieceOfStream = 32UL * 1024;

// Plain numbers: what a run ends with is closed by its end.
int datagrams = kNone;
int stream = kNone;

const sockaddr* DaemonsAddress() {
  return reinterpret_cast<const sockaddr*>(&kDaemon);
}

LogResult ResultOf(int error) noexcept {
  switch (error) {
    case EAGAIN:
      return LogResult::NoRoom;
    case EMSGSIZE:
    case ENOBUFS:
    case ENOMEM:
      return LogResult::TooLong;
    default:
      return LogResult::Lost;
  }
}

/// Lets the next call on `socket` block for a part of what is left of `wait`. False when nothing is.
bool BoundBlocking(int socket, OutputWait& wait) noexcept {
  const auto time = std::min(wait.Remaining(), kLongestSleep).count();
  if (time == 0) return false;
  const timeval limit{.tv_sec = static_cast<time_t>(time / 1'000'000),
                      .tv_usec = static_cast<suseconds_t>(time % 1'000'000)};
  return ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

/// Calls `send` with the flags for not blocking and, where there is no room, with those for blocking until
/// there is or the wait is over.
template <typename Send>
ssize_t SendInTime(int socket, OutputWait& wait, Send send) noexcept {
  ssize_t sent = RetryInterrupted([&] { return send(MSG_NOSIGNAL | MSG_DONTWAIT); });
  while (sent < 0 && (errno == EAGAIN || errno == EINTR)) {
    if (!BoundBlocking(socket, wait)) {
      errno = EAGAIN;
      break;
    }
    sent = send(MSG_NOSIGNAL);
  }
  return sent;
}

/// Gives 0 or the error.
int SendDatagram(const char* message, std::size_t size, OutputWait& wait) noexcept {
  if (datagrams == kNone) datagrams = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (datagrams == kNone) return errno;
  const ssize_t sent = SendInTime(datagrams, wait, [&](int flags) {
    return ::sendto(datagrams, message, size, flags, DaemonsAddress(), sizeof kDaemon);
  });
  return sent < 0 ? errno : 0;
}

void CloseStream() noexcept {
  ::close(stream);
  stream = kNone;
}

/// Gives 0 or the error.
int OpenStream(OutputWait& wait) noexcept {
  stream = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (stream == kNone) return errno;
  const bool may_block = BoundBlocking(stream, wait);
  if (!may_block) ::fcntl(stream, F_SETFL, O_NONBLOCK);
  int error = 0;
  do {
    error = ::connect(stream, DaemonsAddress(), sizeof kDaemon) == 0 ? 0 : errno;
  } while (error == EINTR || (error == EAGAIN && may_block && BoundBlocking(stream, wait)));
  if (error != 0) {
    CloseStream();
  } else if (!may_block) {
    ::fcntl(stream, F_SETFL, 0);  // a later message may have time to wait
  }
  return error;
}

LogResult SendOnStream(const char* message, std::size_t size, OutputWait& wait) noexcept {
  if (stream == kNone) return LogResult::Lost;
  const char* rest = message;
  for (std::size_t left = size + 1; left > 0;) {
    const ssize_t sent = SendInTime(stream, wait, [&](int flags) {
      const bool may_block = (flags & MSG_DONTWAIT) == 0;
      return ::send(stream, rest, may_block ? std::min(left, kPieceOfStream) : left, flags);
    });
    if (sent < 0) {
      const LogResult result = ResultOf(errno);
      // The end of the connection is what tells the daemon that a line it got in part is over.
      if (result != LogResult::NoRoom || rest != message) CloseStream();
      return result;
    }
    rest += sent;
    left -= static_cast<std::size_t>(sent);
  }
  return LogResult::Taken;
}

}  // namespace

LogResult SendToLog(const char* message, std::size_t size, OutputWait& wait) noexcept {
  const LogResult on_old_stream = SendOnStream(message, size, wait);
  if (on_old_stream == LogResult::Taken || on_old_stream == LogResult::NoRoom) return on_old_stream;
  const int error = SendDatagram(message, size, wait);
  if (error == 0) return LogResult::Taken;
  // What is too long for a datagram is refused before the kind of the daemon is looked at.
  if (error != EPROTOTYPE && error != EMSGSIZE) return ResultOf(error);
  const int stream_error = OpenStream(wait);
  if (stream_error == 0) return SendOnStream(message, size, wait);
  return ResultOf(stream_error == EPROTOTYPE ? error : stream_error);
}

}  // namespace KELP::Wifi
