#pragma once

#include <string>

namespace KELP::Wifi::Updater {

/// The text that printf would write for `format` and its arguments.
/// Throws RuntimeError "Error during formatting." when the C library reports a formatting error.
[[gnu::format(printf, 1, 2)]] std::string FormatText(const char* format, ...);

}  // namespace KELP::Wifi::Updater
