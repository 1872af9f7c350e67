#include "tests/support/mounts.h"

#include <fstream>
#include <sstream>

namespace testing_support {

std::vector<std::string> MountsBelow(const std::string& path) {
  std::ifstream mounts("/proc/self/mounts");
  std::vector<std::string> found;
  for (std::string line; std::getline(mounts, line);) {
    std::string source;
    std::string place;
    std::istringstream(line) >> source >> place;
    if (place == path || place.starts_with(path + "/")) found.push_back(line);
  }
  return found;
}

}  // namespace testing_support
