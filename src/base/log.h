#pragma once

#include <syslog.h>

#include <cstddef>

namespace KELP::Wifi {

/// A longer line is cut: the log socket would refuse it as a whole.
inline constexpr std::size_t kLongestLogLine = 128UL * 1024;

/// Sends one line to the system log at `priority` (LOG_ERR, LOG_WARNING), default facility: the very bytes
/// that syslog(3) sends. Unlike that it never waits for a daemon that does not read, but for what the run's
/// OutputWaitBudget has left: then lines are lost.
///
/// Every `format` begins with "%s:%d "; those two arguments, the source name "kelpwifiupdater" and the number
/// `line` by which support finds the message, are put in here, the others follow as for printf.
///
/// Never throws, never fails and needs no memory: where no log daemon listens the line is lost, and so is one
/// that the C library cannot format. A line longer than kLongestLogLine is cut there. One thread only.
template <typename... Arguments>
void Log(int priority, const char* format, int line, Arguments... arguments) noexcept;

/// Log's backend: `format` and all of its arguments as they stand.
void LogFormatted(int priority, const char* format, ...) noexcept;

template <typename... Arguments>
void Log(int priority, const char* format, int line, Arguments... arguments) noexcept {
  LogFormatted(priority, format, "kelpwifiupdater", line, arguments...);
}

}  // namespace KELP::Wifi
