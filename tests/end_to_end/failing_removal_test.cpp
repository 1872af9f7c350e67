// The last step of the migration from 1.3, when the consumed files cannot be removed: strace makes the kernel
// say so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kStrace = "/usr/bin/strace";
const std::string kTrace = "/tmp/trace";
const std::string kModel = kWifi + "model.json";
const std::string kCountry = kWifi + "country.json";

class FailingRemoval : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kStrace)) GTEST_SKIP() << "needs strace";
    if (lab::kSanitizedBuild) GTEST_SKIP() << "the leak sanitizer cannot look at what strace holds";
  }

  lab::RunResult UpdateWithout(const std::string& removal_of) {
    lab::RunOptions options;
    options.wrapper = {kStrace, "-o", kTrace, "-P", removal_of, "-e", "inject=unlink,unlinkat:error=EIO"};
    options.with_proc = true;
    lab::RunResult run = UpdateFrom(device_, "9000", options);
    run.after.erase(kTrace);
    return run;
  }

  lab::PrivateRoot device_{Image("release-13-mesh")};
};

TEST_F(FailingRemoval, OfTheModelFileLeavesBoth) {
  const lab::RunResult run = UpdateWithout(kModel);

  EXPECT_THAT(ExpectFailure(run, "9000"), AllOf(StartsWith("filesystem error"), HasSubstr(kModel)));
  ExpectOnlyWritten(run, {"global.json"});
}

TEST_F(FailingRemoval, OfTheCountryFileLeavesThatOne) {
  const lab::RunResult run = UpdateWithout(kCountry);

  EXPECT_THAT(ExpectFailure(run, "9000"), AllOf(StartsWith("filesystem error"), HasSubstr(kCountry)));
  ExpectedTree expected(run.before);
  expected.Written(kWifi + "global.json", run.after);
  expected.Removed(kModel);
  expected.ExpectEqual(run.after);
}

}  // namespace
}  // namespace end_to_end
