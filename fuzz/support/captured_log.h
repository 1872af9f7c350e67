#pragma once

#include <string>
#include <vector>

namespace fuzz {

struct LogLine {
  int priority;
  std::string text;
};

/// What the code under test sent to the system log since the last call. The targets are linked with a log
/// of their own: the machine's hears nothing, and no line is lost in a full queue.
std::vector<LogLine> TakeLogLines();

/// True when `lines` is the one line `text` at error priority.
bool IsOneError(const std::vector<LogLine>& lines, const std::string& text);

}  // namespace fuzz
