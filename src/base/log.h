#pragma once

#include <syslog.h>

#include <cstddef>

#include "base/log_socket.h"

namespace KELP::Wifi {

/// The part of a longer line that is sent where the line cannot be sent whole: every log socket takes it.
inline constexpr std::size_t kMaxLogLine = 128UL * 1024;

/// Sends one line to the system log at `priority` (LOG_ERR, LOG_WARNING), default facility: the very bytes
/// that syslog(3) sends. Where the daemon has no room the line waits for it, two seconds at most;
/// LogWaitBudget is for all lines together. Once a line has waited in vain no later one waits: it is sent
/// where there is room at once.
///
/// Every `format` begins with "%s:%d "; those two arguments, the source name "kelpwifiupdater" and the number
/// `line` by which support finds the message, are put in here, the others follow as for printf.
///
/// Never throws and never fails: where no log daemon listens the line is lost, and so is one that the C
/// library cannot format. Of a line longer than kMaxLogLine only that much is sent where there is no memory
/// for more, or the socket does not take it; up to that length no memory is needed. One thread only.
template <typename... Arguments>
void Log(int priority, const char* format, int line, Arguments... arguments) noexcept;

/// Sends the line that reports a failure, as Log does, but at the cost of ReportWaitBudget, and waits for
/// half of that at most: the other half is for the console. A line that cannot be sent whole is not cut
/// (TooLong).
template <typename... Arguments>
LogResult LogReport(const char* format, int line, Arguments... arguments) noexcept;

/// The backends: `format` and all of its arguments as they stand.
void LogFormatted(int priority, const char* format, ...) noexcept;
LogResult LogFormattedReport(const char* format, ...) noexcept;

template <typename... Arguments>
void Log(int priority, const char* format, int line, Arguments... arguments) noexcept {
  LogFormatted(priority, format, "kelpwifiupdater", line, arguments...);
}

template <typename... Arguments>
LogResult LogReport(const char* format, int line, Arguments... arguments) noexcept {
  return LogFormattedReport(format, "kelpwifiupdater", line, arguments...);
}

}  // namespace KELP::Wifi
