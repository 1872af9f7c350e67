#include "platform/boot_environment.h"

#include <cstddef>  // the library's header uses size_t without it

#include <libuboot.h>

#include <sys/stat.h>

#include <algorithm>
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
constexpr std::string_view kBlanks = " \t";

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

/// The configuration names a device at the start of each line; none of them may be a FIFO.
bool IsConfigurationSafe() {
  try {
    const std::string configuration = KELP::Wifi::ReadRegularFile(kConfiguration).bytes;
    std::string_view rest = configuration;
    while (!rest.empty()) {
      const std::string_view line = KELP::Wifi::TakeLine(rest);
      const std::size_t start = std::min(line.find_first_not_of(kBlanks), line.size());
      const std::size_t end = std::min(line.find_first_of(kBlanks, start), line.size());
      if (NamesFifo(std::string(line.substr(start, end - start)))) return false;
    }
    return !NamesFifo(kLock);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

int KELPUSBGetUSB3DisableUbootEnv() {
  if (!IsConfigurationSafe()) return -1;
  uboot_ctx* made = nullptr;
  if (libuboot_initialize(&made, nullptr) < 0) return -1;
  const std::unique_ptr<uboot_ctx, Exit> context(made);
  if (libuboot_read_config(made, kConfiguration) < 0) return -1;
  // Closed even when it cannot be opened: the library keeps its lock then, and would wait for itself at the next call.
  const std::unique_ptr<uboot_ctx, Close> environment(made);
  if (libuboot_open(made) < 0) return -1;

  const std::unique_ptr<char, Free> value(libuboot_get_env(made, kVariable));
  const bool disabled = value != nullptr && value.get()[0] != '\0' && std::strcmp(value.get(), "0") != 0;
  return disabled ? 1 : 0;
}
