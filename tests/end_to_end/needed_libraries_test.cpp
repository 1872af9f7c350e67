// What the loader of a small device has to bring in before the program begins.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "lab/runs/program_run.h"
#include "tests/support/child_process.h"

namespace end_to_end {
namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::StartsWith;

TEST(NeededLibraries, AreTheProgramsOwnAndTheRuntimes) {
  if (lab::kSanitizedBuild) GTEST_SKIP() << "the sanitizers bring libraries of their own";
  const testing_support::ShellResult result = testing_support::Shell(
      "readelf --dynamic --wide " KELP_PROGRAM " | sed -n 's/.*(NEEDED).*\\[\\(.*\\)\\]/\\1/p'");
  std::istringstream lines(result.output);
  std::vector<std::string> needed;
  for (std::string line; std::getline(lines, line);) needed.push_back(line);

  EXPECT_GE(needed.size(), 5U) << result.output;
  EXPECT_THAT(needed,
              Each(AnyOf(StartsWith("libjsoncpp.so."), StartsWith("libsodium.so."),
                         StartsWith("libubootenv.so."), StartsWith("libstdc++.so."),
                         StartsWith("libgcc_s.so."), StartsWith("libc.so."), StartsWith("ld-linux"))));
}

}  // namespace
}  // namespace end_to_end
