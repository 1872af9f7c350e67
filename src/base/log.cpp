#include "base/log.h"

#include <algorithm>
#include <array>
#include <cerrno>  // program_invocation_short_name
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <memory>
#include <new>
#include <string_view>

namespace KELP::Wifi {
namespace {

constexpr std::size_t kMaxHeader = 320;

/// Writes "<11>Nov 21 13:17:00 kelpwifiupdater: ", as syslog(3) does whatever the locale, with the NUL after
/// it; gives its length.
std::size_t WriteHeader(char* place, int priority) noexcept {
  constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  int length = 0;
  if (::localtime_r(&now, &local) == nullptr) {
    length = std::snprintf(place, kMaxHeader, "<%d>: ", LOG_USER | priority);
  } else {
    length = std::snprintf(place, kMaxHeader, "<%d>%s %2d %.2d:%.2d:%.2d %.255s: ", LOG_USER | priority,
                           kMonths.at(static_cast<std::size_t>(local.tm_mon)), local.tm_mday, local.tm_hour,
                           local.tm_min, local.tm_sec, program_invocation_short_name);
  }
  return static_cast<std::size_t>(std::max(length, 0));
}

/// Sends a line of `length` bytes, longer than the buffer that begins with its header, from the heap.
LogResult SendFromHeap(std::string_view header, std::size_t length, const char* format,
                       std::va_list arguments, OutputWait& wait) noexcept {
  const std::unique_ptr<char[]> message(new (std::nothrow) char[header.size() + length + 1]);
  if (message == nullptr) return LogResult::TooLong;
  header.copy(message.get(), header.size());
  if (std::vsnprintf(&message[header.size()], length + 1, format, arguments) < 0) return LogResult::TooLong;
  return SendToLog(message.get(), header.size() + length, wait);
}

LogResult Send(bool may_cut, int priority, const char* format, std::va_list arguments,
               OutputWait& wait) noexcept {
  // Not on the stack, which may be too small for it, nor from the heap, which may be used up.
  static std::array<char, kMaxHeader + kMaxLogLine + 1> message;
  const std::size_t header = WriteHeader(message.data(), priority);
  std::va_list again;
  va_copy(again, arguments);
  const int result = std::vsnprintf(&message[header], kMaxLogLine + 1, format, arguments);
  const auto length = static_cast<std::size_t>(std::max(result, 0));
  LogResult sent = LogResult::Lost;
  if (length > kMaxLogLine) {
    sent = SendFromHeap({message.data(), header}, length, format, again, wait);
    if (sent == LogResult::TooLong && may_cut) sent = SendToLog(message.data(), header + kMaxLogLine, wait);
  } else if (result >= 0) {
    sent = SendToLog(message.data(), header + length, wait);
  }
  va_end(again);
  return sent;
}

}  // namespace

void LogFormatted(int priority, const char* format, ...) noexcept {
  constexpr std::chrono::seconds kMaxWait{2};
  OutputWait wait(LogWaitBudget(), kMaxWait);
  std::va_list arguments;
  va_start(arguments, format);
  const LogResult result = Send(true, priority, format, arguments, wait);
  va_end(arguments);
  if (result == LogResult::NoRoom) LogWaitBudget().SpendAll();
}

LogResult LogFormattedReport(const char* format, ...) noexcept {
  constexpr std::chrono::milliseconds kMaxWait{2500};
  OutputWait wait(ReportWaitBudget(), kMaxWait);
  std::va_list arguments;
  va_start(arguments, format);
  const LogResult result = Send(false, LOG_ERR, format, arguments, wait);
  va_end(arguments);
  return result;
}

}  // namespace KELP::Wifi
