#pragma once

#include <syslog.h>

namespace KELP::Wifi {

/// Sends one line to the system log at `priority` (LOG_ERR, LOG_WARNING), default facility.
///
/// Every `format` begins with "%s:%d "; those two arguments, the source name "kelpwifiupdater" and the number
/// `line` by which support finds the message, are put in here, the others follow as for printf.
///
/// Never throws and never fails: where no log daemon listens the line is lost. A line longer than 128 KiB,
/// which the log socket would refuse as a whole, is cut there.
template <typename... Arguments>
void Log(int priority, const char* format, int line, Arguments... arguments) noexcept;

/// Log's backend: `format` and all of its arguments as they stand.
void LogFormatted(int priority, const char* format, ...) noexcept;

template <typename... Arguments>
void Log(int priority, const char* format, int line, Arguments... arguments) noexcept {
  LogFormatted(priority, format, "kelpwifiupdater", line, arguments...);
}

}  // namespace KELP::Wifi
