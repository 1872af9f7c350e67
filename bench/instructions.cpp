#include "bench/instructions.h"

#include <charconv>
#include <fstream>
#include <string>
#include <string_view>

namespace bench {
namespace {

constexpr std::string_view kProfiles = "/tmp/callgrind.";

/// Distributions put a shell script in the way of the program, which would need a shell's worth of files in
/// the root.
std::optional<std::string> FindValgrind() {
  for (const char* path : {"/usr/bin/valgrind.bin", "/usr/bin/valgrind"}) {
    std::ifstream program(path, std::ios::binary);
    if (program.get() == '\x7F') return path;
  }
  return std::nullopt;
}

std::int64_t TotalOf(std::string_view profile) {
  constexpr std::string_view kTotal = "\ntotals: ";
  const std::size_t place = profile.rfind(kTotal);
  if (place == std::string_view::npos) return 0;
  std::int64_t total = 0;
  std::from_chars(profile.data() + place + kTotal.size(), profile.data() + profile.size(), total);
  return total;
}

}  // namespace

bool CanCountInstructions() {
  return FindValgrind().has_value();
}

std::optional<std::int64_t> CountInstructions(const std::filesystem::path& image,
                                              const Contestant& contestant) {
  lab::PrivateRoot root = MakeRoot(image, contestant);
  return CountInstructions(root, contestant);
}

std::optional<std::int64_t> CountInstructions(lab::PrivateRoot& root, const Contestant& contestant) {
  const auto valgrind = FindValgrind();
  if (!valgrind) return std::nullopt;
  const lab::RunResult run =
      RunContestant(root, contestant,
                    {*valgrind, "--tool=callgrind", "--quiet", "--vgdb=no", "--trace-children=yes",
                     "--callgrind-out-file=" + std::string(kProfiles) + "%p"},
                    true);
  std::int64_t total = 0;
  for (auto file = run.after.lower_bound(std::string(kProfiles));
       file != run.after.end() && file->first.starts_with(kProfiles); ++file) {
    total += TotalOf(file->second.content);
  }
  return total;
}

}  // namespace bench
