#pragma once

#include <gtest/gtest.h>
#include <syslog.h>

#include <string>
#include <vector>

#include "lab/runs/in_root.h"

namespace testing_support {

/// The messages logged since the last call; each has to be one at error priority.
inline std::vector<std::string> LoggedErrors(lab::InRoot& inside) {
  std::vector<std::string> messages;
  for (const lab::LogLine& line : inside.Log()) {
    EXPECT_EQ(line.severity, LOG_ERR) << line.message;
    messages.push_back(line.message);
  }
  return messages;
}

using Messages = std::vector<std::string>;

}  // namespace testing_support
