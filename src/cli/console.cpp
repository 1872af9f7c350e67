#include "cli/console.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <initializer_list>
#include <string_view>

#include "base/file_descriptor.h"

namespace KELP::Wifi::Updater {
namespace {

void Write(int descriptor, std::initializer_list<std::string_view> parts) noexcept {
  for (const std::string_view part : parts) {
    if (!WriteAll(descriptor, part.data(), part.size())) return;
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
  std::signal(SIGPIPE, SIG_IGN);
  std::array<pollfd, 3> streams{{{STDIN_FILENO, 0, 0}, {STDOUT_FILENO, 0, 0}, {STDERR_FILENO, 0, 0}}};
  if (::poll(streams.data(), streams.size(), 0) <= 0) return;
  for (const pollfd& stream : streams) {
    if ((stream.revents & POLLNVAL) != 0) ::open("/dev/null", O_RDWR);
  }
}

}  // namespace KELP::Wifi::Updater
