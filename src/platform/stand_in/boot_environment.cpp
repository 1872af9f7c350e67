#include "platform/boot_environment.h"

#include <cstddef>  // the library's header uses size_t without it

#include <libuboot.h>

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/blocking_call_timeout.h"
#include "base/file_content.h"
#include "platform/stand_in/text/entry_lines.h"

namespace {

constexpr const char* kConfiguration = "/etc/fw_env.config";
constexpr const char* kLock = "/var/lock/fw_printenv.lock";
constexpr const char* kVariable = "usb3_disable";
constexpr std::string_view kBlanks = " \t\r\v\f";
constexpr int kHexadecimal = 16;
constexpr int kMostCopies = 2;                          // the library reads no further
constexpr unsigned long long kSmallestEnvironment = 6;  // its header and a byte
constexpr unsigned long long kLargestEnvironment = 16ULL * 1024 * 1024;
constexpr unsigned kRawFlash = 90;                 // the major number of its character devices
constexpr std::string_view kVolumes = "/dev/ubi";  // volumes on raw flash have no number of their own
constexpr std::chrono::seconds kLongestWait{3};    // slow flash has written an environment by then

struct Exit {
  void operator()(uboot_ctx* context) const { libuboot_exit(context); }
};
struct Close {
  void operator()(uboot_ctx* context) const { libuboot_close(context); }
};
struct Free {
  void operator()(char* text) const { std::free(text); }
};

/// By the name behind all links, as the library goes by it.
bool IsVolume(const std::string& path) {
  const std::unique_ptr<char, Free> name(::realpath(path.c_str(), nullptr));
  return name != nullptr && std::string_view(name.get()).starts_with(kVolumes);
}

/// The library opens whatever it is pointed at: it would wait at a terminal or a FIFO, and opening a watchdog
/// starts it. What is not there, or goes by a name that only the library knows, is its business.
bool MayBeStorage(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return true;
  if (S_ISCHR(status.st_mode)) return major(status.st_rdev) == kRawFlash || IsVolume(path);
  return S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
}

bool IsFIFO(const char* path) {
  struct stat status {};
  return ::stat(path, &status) == 0 && S_ISFIFO(status.st_mode);
}

/// Where an environment lies.
struct Place {
  std::string device;
  unsigned long long size;
};

/// A line holds a device, an offset and a size in hexadecimal; the library passes over any other.
std::optional<Place> ParseLine(std::string_view line) {
  if (line.starts_with('#')) return std::nullopt;
  const std::string text(line.substr(0, line.find('\0')));
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
  const char* const offset = text.c_str() + end;
  char* size = nullptr;
  std::strtoll(offset, &size, 0);
  char* rest = nullptr;
  const unsigned long long bytes = std::strtoull(size, &rest, kHexadecimal);
  if (size == offset || rest == size) return std::nullopt;
  return Place{text.substr(begin, end - begin), bytes};
}

/// The library trusts the size: it reads past the end of an environment that is smaller than its own header.
bool IsUsable(const Place& place) {
  return place.size >= kSmallestEnvironment && place.size <= kLargestEnvironment &&
         MayBeStorage(place.device);
}

bool IsConfigurationUsable() {
  try {
    const std::string configuration = KELP::Wifi::ReadRegularFile(kConfiguration);
    std::string_view rest = configuration;
    for (int copies = 0; copies < kMostCopies && !rest.empty();) {
      const std::optional<Place> place = ParseLine(KELP::Wifi::TakeLine(rest));
      if (!place) continue;
      if (!IsUsable(*place)) return false;
      ++copies;
    }
    return !IsFIFO(kLock);
  } catch (const std::exception&) {
    return false;
  }
}

int AskOnce() {
  uboot_ctx* made = nullptr;
  if (libuboot_initialize(&made, nullptr) < 0) return -1;
  const std::unique_ptr<uboot_ctx, Exit> context(made);
  if (libuboot_read_config(made, kConfiguration) < 0) return -1;
  // Closed even when it cannot be opened: the library keeps its lock then, and would wait for itself at the
  // next call.
  const std::unique_ptr<uboot_ctx, Close> environment(made);
  if (libuboot_open(made) < 0) return -1;

  const std::unique_ptr<char, Free> value(libuboot_get_env(made, kVariable));
  const bool disabled = value != nullptr && value.get()[0] != '\0' && std::strcmp(value.get(), "0") != 0;
  return disabled ? 1 : 0;
}

}  // namespace

int KELPUSBGetUSB3DisableUbootEnv() {
  if (!IsConfigurationUsable()) return -1;
  const KELP::Wifi::BlockingCallTimeout timeout(kLongestWait);
  if (!timeout.IsSet()) return -1;
  int answer = -1;
  do {  // the library takes a read that a signal interrupts for a failed one, and goes on without its lock
    errno = 0;
    answer = AskOnce();
    // cppcheck-suppress knownConditionTrueFalse  ; a signal changes it
    if (timeout.HasExpired()) return -1;
  } while (errno == EINTR);
  return answer;
}
