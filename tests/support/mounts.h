#pragma once

#include <string>
#include <vector>

namespace testing_support {

/// What this process sees mounted at `path` and below it, a line each: what else the machine mounts meanwhile
/// is nobody's business.
std::vector<std::string> MountsBelow(const std::string& path);

}  // namespace testing_support
