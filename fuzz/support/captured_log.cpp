#include "fuzz/support/captured_log.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "base/log.h"

namespace {

std::vector<fuzz::LogLine>& Lines() {
  static std::vector<fuzz::LogLine> lines;
  return lines;
}

[[gnu::format(printf, 2, 0)]] void Append(int priority, const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  Lines().push_back({priority, std::move(text)});
}

}  // namespace

// KELP::Wifi::LogFormatted and LogFormattedReport as the linker knows them, which puts these in their place
// (--wrap).
void CaptureLine(int priority, const char* format, ...) __asm__("__wrap__ZN4KELP4Wifi12LogFormattedEiPKcz");
void CaptureLine(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Append(priority, format, arguments);
  va_end(arguments);
}

KELP::Wifi::LogResult CaptureReport(const char* format,
                                    ...) __asm__("__wrap__ZN4KELP4Wifi18LogFormattedReportEPKcz");
KELP::Wifi::LogResult CaptureReport(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Append(LOG_ERR, format, arguments);
  va_end(arguments);
  return KELP::Wifi::LogResult::Taken;
}

namespace fuzz {

std::vector<LogLine> TakeLogLines() {
  return std::exchange(Lines(), {});
}

bool IsOneError(const std::vector<LogLine>& lines, const std::string& text) {
  return lines.size() == 1 && lines.front().priority == LOG_ERR && lines.front().text == text;
}

}  // namespace fuzz
