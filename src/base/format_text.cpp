#include "base/format_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

namespace KELP::Wifi {

std::optional<std::string> TryFormatText(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  struct End {
    std::va_list& list;
    ~End() { va_end(list); }
  } end{arguments};
  return TryFormatTextV(format, arguments);
}

std::optional<std::string> TryFormatTextV(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  std::array<char, 128> usual;
  const int measured = std::vsnprintf(usual.data(), usual.size(), format, arguments);
  const auto length = static_cast<std::size_t>(std::max(measured, 0));
  std::string text;
  if (length < usual.size()) {
    text.assign(usual.data(), length);
  } else {
    text.resize(length);
    std::vsnprintf(text.data(), length + 1, format, again);
  }
  va_end(again);
  if (measured < 0) return std::nullopt;
  return text;
}

}  // namespace KELP::Wifi
