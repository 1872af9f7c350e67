#pragma once

#include <cstdarg>
#include <string>

namespace KELP::Wifi {

/// The text that printf would write for `format` and its arguments.
/// Throws RuntimeError "Error during formatting." when the C library reports a formatting error.
[[gnu::format(printf, 1, 2)]] std::string FormatText(const char* format, ...);

/// As FormatText, with the arguments as a list.
[[gnu::format(printf, 1, 0)]] std::string FormatTextV(const char* format, std::va_list arguments);

}  // namespace KELP::Wifi
