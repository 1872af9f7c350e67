// A whole migration leaks nothing and reads nothing that was never written.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

constexpr const char* kValgrind = "/usr/bin/valgrind.bin";  // valgrind itself is a shell script
constexpr int kFoundErrors = 99;

class Valgrind : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(Valgrind, FindsNothingInAMigration) {
  if (lab::kSanitizedBuild) GTEST_SKIP() << "the sanitizers look for the same";
  ASSERT_TRUE(std::filesystem::exists(kValgrind)) << "valgrind is missing: scripts/setup installs it";
  const auto [image, build] = GetParam();
  lab::PrivateRoot device{Image(image)};
  lab::RunOptions options;
  options.with_proc = true;
  options.wrapper = {kValgrind, "--quiet", "--leak-check=full",
                     "--error-exitcode=" + std::to_string(kFoundErrors)};
  const lab::RunResult run = UpdateFrom(device, build, options);
  EXPECT_NE(run.status, kFoundErrors);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

INSTANTIATE_TEST_SUITE_P(Devices, Valgrind,
                         testing::Values(std::pair{"tri-band-mesh-router", "8000"},
                                         std::pair{"tri-band-repeater", "8000"},
                                         std::pair{"release-13-mesh", "9000"}));

}  // namespace
}  // namespace end_to_end
