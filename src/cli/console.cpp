#include "cli/console.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "base/blocking_call_timeout.h"
#include "base/wait_budget.h"

namespace KELP::Wifi::Updater {
namespace {

/// Whether the stream has room for a piece, or gets it before the wait is over.
bool HasRoom(int descriptor, OutputWait& wait) noexcept {
  pollfd stream{descriptor, POLLOUT, 0};
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(wait.Remaining());
  return ::poll(&stream, 1, static_cast<int>(left.count())) > 0;
}

bool WriteInTime(int descriptor, std::string_view text, OutputWait& wait,
                 const BlockingCallTimeout& timeout) noexcept {
  while (!text.empty()) {
    std::size_t size = text.size();
    if (!timeout.IsSet()) {  // nothing would interrupt a write that waits
      if (!HasRoom(descriptor, wait)) return false;
      size = std::min<std::size_t>(size, PIPE_BUF);
    }
    const ssize_t written = ::write(descriptor, text.data(), size);
    if (written == 0 || (written < 0 && errno != EINTR)) return false;
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    if (!text.empty() && wait.Remaining() == std::chrono::microseconds::zero()) return false;
  }
  return true;
}

void Write(int descriptor, std::initializer_list<std::string_view> parts) noexcept {
  constexpr auto kLeastToTry = std::chrono::milliseconds(10);
  OutputWait wait(ReportWaitBudget());
  // The streams belong to others too: to make them non-blocking would be felt there.
  const BlockingCallTimeout timeout(
      std::max(std::chrono::ceil<std::chrono::milliseconds>(wait.Remaining()), kLeastToTry));
  for (const std::string_view part : parts) {
    if (!WriteInTime(descriptor, part, wait, timeout)) return;
  }
}

}  // namespace

void WriteToStandardOutput(std::initializer_list<std::string_view> parts) noexcept {
  Write(STDOUT_FILENO, parts);
}

void WriteToStandardError(std::initializer_list<std::string_view> parts) noexcept {
  Write(STDERR_FILENO, parts);
}

void SecureStandardStreams() noexcept {
  std::array<pollfd, 3> streams{{{STDIN_FILENO, 0, 0}, {STDOUT_FILENO, 0, 0}, {STDERR_FILENO, 0, 0}}};
  if (::poll(streams.data(), streams.size(), 0) == 0) return;
  // The kernel gives the lowest number that is free.
  int descriptor = STDIN_FILENO;
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = ::open("/", O_PATH);
  if (descriptor >= 0) ::close(descriptor);
}

}  // namespace KELP::Wifi::Updater
