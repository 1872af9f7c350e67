#include "platform/boot_environment.h"

#include <cstddef>  // the library's header uses size_t without it

#include <libuboot.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "platform/entry_lines.h"
#include "platform/file_content.h"

namespace {

constexpr const char* kConfiguration = "/etc/fw_env.config";
constexpr const char* kLock = "/var/lock/fw_printenv.lock";
constexpr const char* kVariable = "usb3_disable";
constexpr std::string_view kBlanks = " \t\r\v\f";
constexpr int kHexadecimal = 16;
constexpr unsigned long long kSmallestEnvironment = 64;
constexpr unsigned long long kLargestEnvironment = 16ULL * 1024 * 1024;

struct Exit {
  void operator()(uboot_ctx* context) const { libuboot_exit(context); }
};
struct Close {
  void operator()(uboot_ctx* context) const { libuboot_close(context); }
};
struct Free {
  void operator()(char* text) const { std::free(text); }
};

/// The library opens what it is pointed at and would wait for a writer at a FIFO, for ever.
bool NamesFifo(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

std::string TakeField(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  std::string field(rest.substr(0, rest.find_first_of(kBlanks)));
  rest.remove_prefix(field.size());
  return field;
}

/// A line holds a device, an offset and a size in hexadecimal. The library trusts the size: it reads past the
/// end of an environment that is smaller than its own header.
bool IsUsable(std::string_view line) {
  if (line.starts_with('#')) return true;
  const std::string device = TakeField(line);
  TakeField(line);  // the offset
  const std::string size = TakeField(line);
  if (size.empty()) return true;  // describes no environment
  const unsigned long long bytes = std::strtoull(size.c_str(), nullptr, kHexadecimal);
  return bytes >= kSmallestEnvironment && bytes <= kLargestEnvironment && !NamesFifo(device);
}

bool IsConfigurationUsable() {
  try {
    const std::string configuration = KELP::Wifi::ReadRegularFile(kConfiguration).bytes;
    std::string_view rest = configuration;
    while (!rest.empty()) {
      if (!IsUsable(KELP::Wifi::TakeLine(rest))) return false;
    }
    return !NamesFifo(kLock);
  } catch (const std::exception&) {
    return false;
  }
}

int AskOnce() {
  if (!IsConfigurationUsable()) return -1;
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
  int answer = -1;
  do {  // the library takes a read that a signal interrupts for a failed one
    errno = 0;
    answer = AskOnce();
  } while (answer < 0 && errno == EINTR);
  return answer;
}
