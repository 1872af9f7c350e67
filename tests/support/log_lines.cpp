#include "tests/support/log_lines.h"

#include <syslog.h>

namespace testing_support {
namespace {

std::string PriorityName(int severity) {
  switch (severity) {
    case LOG_ERR:
      return "err";
    case LOG_WARNING:
      return "warning";
    default:
      return "priority " + std::to_string(severity);
  }
}

std::string Line(int severity, int number, std::string_view message) {
  return PriorityName(severity) + " kelpwifiupdater:" + std::to_string(number) + " " + std::string(message);
}

}  // namespace

LogLines PrintLog(const std::vector<lab::LogLine>& lines) {
  LogLines printed;
  for (const lab::LogLine& line : lines) printed.push_back(PriorityName(line.severity) + " " + line.message);
  return printed;
}

std::string Error(int number, std::string_view message) {
  return Line(LOG_ERR, number, message);
}

std::string Warning(int number, std::string_view message) {
  return Line(LOG_WARNING, number, message);
}

}  // namespace testing_support
