// The real program with memory refused from any allocation on, wherever that strikes: in the run, outside the
// place where failures are caught, or in what runs before main.
#include <gtest/gtest.h>

#include <string>

#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

lab::RunResult RunRefused(const std::string& image, const std::string& build, const std::string& variable) {
  lab::PrivateRoot device(Image(image));
  device.MakeDirectory("/tmp");
  lab::RunOptions options;
  if (!variable.empty()) options.environment.push_back(variable);
  return lab::RunProgram(device, KELP_REFUSING_PROGRAM, {"--update-config", build}, options);
}

class RefusedMemory : public ::testing::Test {
 protected:
  void SetUp() override {
    if (lab::kSanitizedBuild) GTEST_SKIP() << "the sanitizers have an allocator of their own";
  }
};

/// Refuses from the `first` allocation of a whole run on, then from every `step`th.
void ExpectRunsToEndInAReport(const std::string& image, const std::string& build, long first, long step) {
  const lab::RunResult whole = RunRefused(image, build, "");
  ASSERT_EQ(whole.status, 0) << whole.err;
  const long count = std::stol(whole.after.at("/tmp/allocations").content);
  ASSERT_GT(count, 10);
  for (long refused = first; refused < count; refused += step) {
    SCOPED_TRACE("refused from " + std::to_string(refused));
    const lab::RunResult run = RunRefused(image, build, "REFUSED_FROM=" + std::to_string(refused));
    if (run.status == 0) {
      ExpectSuccess(run);
    } else {
      ExpectFailure(run, build);
    }
  }
}

TEST_F(RefusedMemory, EveryRunWithNothingToDoEndsInAReport) {
  ExpectRunsToEndInAReport("dual-band-standalone", "9300", 0, 1);
}

TEST_F(RefusedMemory, EveryMigrationOfTheGlobalFilesEndsInAReport) {
  ExpectRunsToEndInAReport("release-13-mesh", "9000", 0, 1);
}

TEST_F(RefusedMemory, EveryMigrationOfAHouseholdEndsInAReport) {
  ExpectRunsToEndInAReport("tri-band-mesh-router", "8227", 0, 7);
}

TEST_F(RefusedMemory, ReportHasTheBuildNumberEvenWhereMemoryIsRefusedBeforeItIsRead) {
  const lab::RunResult run = RunRefused("dual-band-standalone", " 9300 as typed", "REFUSED_FROM=0");
  ExpectFailure(run, " 9300 as typed", "std::bad_alloc");
}

}  // namespace
}  // namespace end_to_end
