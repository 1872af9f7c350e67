#pragma once

#include <cstdarg>
#include <optional>
#include <string>

namespace KELP::Wifi {

/// The text that printf would write for `format` and its arguments; none when the C library reports a
/// formatting error.
[[gnu::format(printf, 1, 2)]] std::optional<std::string> TryFormatText(const char* format, ...);

/// As TryFormatText, with the arguments as a list.
[[gnu::format(printf, 1, 0)]] std::optional<std::string> TryFormatTextV(const char* format,
                                                                        std::va_list arguments);

}  // namespace KELP::Wifi
