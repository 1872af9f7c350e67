#include "base/log.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>

namespace KELP::Wifi {
namespace {

constexpr std::size_t kLongestLine = 128 * 1024;

}  // namespace

void LogFormatted(int priority, const char* format, ...) noexcept {
  std::array<char, 1024> usual{};
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(usual.data(), usual.size(), format, arguments);
  va_end(arguments);

  const char* line = usual.data();
  std::unique_ptr<char[]> longer;
  if (length >= static_cast<int>(usual.size())) {
    const std::size_t size = std::min(static_cast<std::size_t>(length), kLongestLine) + 1;
    // A report of a failed allocation must not fail for the same reason: the cut line is better than none.
    longer.reset(new (std::nothrow) char[size]);
    if (longer != nullptr) {
      std::vsnprintf(longer.get(), size, format, again);
      line = longer.get();
    }
  }
  va_end(again);

  syslog(priority, "%s", line);
}

}  // namespace KELP::Wifi
