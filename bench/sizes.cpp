#include "bench/sizes.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <numeric>
#include <stdexcept>

namespace bench {

namespace fs = std::filesystem;

std::int64_t StrippedSize(const fs::path& program) {
  const fs::path stripped = program.native() + ".stripped";
  std::array<std::string, 4> words{KELP_STRIP, "-o", stripped.native(), program.native()};
  std::array<char*, 5> arguments{words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
  pid_t child = 0;
  int status = -1;
  if (::posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
      ::waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error("cannot take the symbols off " + program.native());
  }
  const auto size = static_cast<std::int64_t>(fs::file_size(stripped));
  fs::remove(stripped);
  return size;
}

std::int64_t SizeOf(const std::vector<std::string>& files) {
  return std::accumulate(files.begin(), files.end(), std::int64_t{0}, [](std::int64_t sum, const auto& file) {
    return sum + static_cast<std::int64_t>(fs::file_size(file));
  });
}

}  // namespace bench
