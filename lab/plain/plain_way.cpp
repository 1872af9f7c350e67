#include "lab/plain/plain_way.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "lab/images/descriptor.h"

namespace lab {
namespace {

/// Empty as long as the way is the full one.
std::string& Refused() {
  static std::string refused;
  return refused;
}

}  // namespace

std::optional<std::string> WhyNoPlainWay() {
  if (::geteuid() != 0) return "not root";
  // What a program leaves running is looked for there.
  std::error_code ignored;
  if (std::filesystem::read_symlink("/proc/self", ignored) != std::to_string(::getpid())) {
    return "/proc is not that of this process namespace";
  }
  const pid_t child = Checked(::fork(), "fork", "");
  if (child == 0) ::_exit(::chroot("/") == 0 ? 0 : errno);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (status == 0) return std::nullopt;
  return "chroot: " + std::generic_category().message(WEXITSTATUS(status));
}

void TakePlainWay(const std::string& refused) {
  Refused() = refused;
}

bool IsPlainWay() {
  return !Refused().empty();
}

std::string PlainWayNotice() {
  return "this container lets no process mount or make namespaces (" + Refused() +
         "), so the program runs in a plain chroot:\n"
         "as root it could leave it, signal other processes, be looked at by them, and fill the disk.\n";
}

}  // namespace lab
