#include "bench/growth.h"

#include <gtest/gtest.h>

#include "bench/instructions.h"

namespace bench {
namespace {

TEST(MeasureGrowth, ComparesEachStepWithTheOneBefore) {
  if (!CanCountInstructions()) GTEST_SKIP() << "valgrind is missing (scripts/setup bench installs it)";
  const Device device{std::filesystem::path(KELP_DEVICES) / "tri-band-mesh-router", "8000"};

  const std::vector<GrowthStep> steps = MeasureGrowth(device.image, MakeProgram(device), 1000);

  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[0].stations, 0);
  EXPECT_EQ(steps[1].stations, 100);
  EXPECT_EQ(steps[2].stations, 1000);
  EXPECT_FALSE(steps[1].ratio.has_value());
  ASSERT_TRUE(steps[2].ratio.has_value());
  EXPECT_LE(*steps[2].ratio, 10.5);  // in step with the work
  EXPECT_GE(*steps[2].ratio, 9.0);
}

}  // namespace
}  // namespace bench
