#include "base/log.h"

#include <algorithm>
#include <array>
#include <cerrno>  // program_invocation_short_name
#include <cstdarg>
#include <cstdio>
#include <ctime>

#include "base/log_socket.h"

namespace KELP::Wifi {
namespace {

constexpr std::size_t kLongestHeader = 320;

/// Writes "<11>Nov 21 13:17:00 kelpwifiupdater: ", as syslog(3) does whatever the locale, with the NUL behind
/// it; gives its length.
std::size_t WriteHeader(char* place, int priority) noexcept {
  constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  int length = 0;
  if (::localtime_r(&now, &local) == nullptr) {
    length = std::snprintf(place, kLongestHeader, "<%d>: ", LOG_USER | priority);
  } else {
    length = std::snprintf(place, kLongestHeader, "<%d>%s %2d %.2d:%.2d:%.2d %.255s: ", LOG_USER | priority,
                           kMonths.at(static_cast<std::size_t>(local.tm_mon)), local.tm_mday, local.tm_hour,
                           local.tm_min, local.tm_sec, program_invocation_short_name);
  }
  return static_cast<std::size_t>(std::max(length, 0));
}

}  // namespace

void LogFormatted(int priority, const char* format, ...) noexcept {
  // Not on the stack, which may be too small for it, nor from the heap, which may be used up.
  static std::array<char, kLongestHeader + kLongestLogLine + 1> message;
  const std::size_t header = WriteHeader(message.data(), priority);
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(&message[header], kLongestLogLine + 1, format, arguments);
  va_end(arguments);
  if (length < 0) return;
  SendToLog(message.data(), header + std::min(static_cast<std::size_t>(length), kLongestLogLine));
}

}  // namespace KELP::Wifi
