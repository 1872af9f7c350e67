#include "cli/console.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <initializer_list>
#include <string_view>

#include "base/patience.h"
#include "base/wait_limit.h"

namespace KELP::Wifi::Updater {
namespace {

bool WriteInTime(int descriptor, std::string_view text, const Patience& patience) noexcept {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written == 0 || (written < 0 && errno != EINTR)) return false;
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    if (!text.empty() && patience.Left() == std::chrono::microseconds::zero()) return false;
  }
  return true;
}

void Write(int descriptor, std::initializer_list<std::string_view> parts) noexcept {
  constexpr auto kLeastToTry = std::chrono::milliseconds(10);
  const Patience patience;
  // The streams belong to others too: to make them non-blocking would be felt there.
  const WaitLimit limit(std::max(std::chrono::ceil<std::chrono::milliseconds>(patience.Left()), kLeastToTry));
  for (const std::string_view part : parts) {
    if (!WriteInTime(descriptor, part, patience)) return;
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
