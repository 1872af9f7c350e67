#include "base/file_cache.h"

#include <gtest/gtest.h>

namespace KELP::Wifi {
namespace {

TEST(Run, OutsideOfOneNothingIsTrusted) {
  EXPECT_EQ(FileCacheEpoch(), 0U);
  { const FileCacheScope run; }
  EXPECT_EQ(FileCacheEpoch(), 0U);
  InvalidateFileCache();
  EXPECT_EQ(FileCacheEpoch(), 0U);
}

TEST(Run, IsOneStretchUntilTheProgramChangesAFile) {
  const FileCacheScope run;
  const std::uint64_t first = FileCacheEpoch();
  EXPECT_NE(first, 0U);
  EXPECT_EQ(FileCacheEpoch(), first);
  InvalidateFileCache();
  const std::uint64_t second = FileCacheEpoch();
  EXPECT_NE(second, 0U);
  EXPECT_NE(second, first);
  EXPECT_EQ(FileCacheEpoch(), second);
}

TEST(Run, NoTwoRunsShareAStretch) {
  std::uint64_t earlier = 0;
  for (int i = 0; i < 3; ++i) {
    const FileCacheScope run;
    EXPECT_NE(FileCacheEpoch(), earlier);
    earlier = FileCacheEpoch();
  }
}

}  // namespace
}  // namespace KELP::Wifi
