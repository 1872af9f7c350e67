#include "base/run.h"

#include <gtest/gtest.h>

namespace KELP::Wifi {
namespace {

TEST(Run, OutsideOfOneNothingIsTrusted) {
  EXPECT_EQ(CurrentStretch(), 0U);
  { const RunUnderWay run; }
  EXPECT_EQ(CurrentStretch(), 0U);
  TrustNoFileReadSoFar();
  EXPECT_EQ(CurrentStretch(), 0U);
}

TEST(Run, IsOneStretchUntilTheProgramChangesAFile) {
  const RunUnderWay run;
  const std::uint64_t first = CurrentStretch();
  EXPECT_NE(first, 0U);
  EXPECT_EQ(CurrentStretch(), first);
  TrustNoFileReadSoFar();
  const std::uint64_t second = CurrentStretch();
  EXPECT_NE(second, 0U);
  EXPECT_NE(second, first);
  EXPECT_EQ(CurrentStretch(), second);
}

TEST(Run, NoTwoRunsShareAStretch) {
  std::uint64_t earlier = 0;
  for (int i = 0; i < 3; ++i) {
    const RunUnderWay run;
    EXPECT_NE(CurrentStretch(), earlier);
    earlier = CurrentStretch();
  }
}

}  // namespace
}  // namespace KELP::Wifi
