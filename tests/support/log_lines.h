#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/runs/log_collector.h"

namespace testing_support {

/// Log lines as text that compares and prints well: "err kelpwifiupdater:760 Invalid ...".
using LogLines = std::vector<std::string>;

LogLines PrintLog(const std::vector<lab::LogLine>& lines);

/// The line that the program logs at error priority under `number`.
std::string Error(int number, std::string_view message);
/// As Error, at warning priority.
std::string Warning(int number, std::string_view message);

}  // namespace testing_support
