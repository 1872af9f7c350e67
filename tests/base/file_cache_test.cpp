#include "base/file_cache.h"

#include <gtest/gtest.h>

namespace KELP::Wifi {
namespace {

TEST(FileCache, HasNoEpochOutsideOfAScope) {
  EXPECT_EQ(FileCacheEpoch(), kNoFileCache);
  { const FileCacheScope scope; }
  EXPECT_EQ(FileCacheEpoch(), kNoFileCache);
  InvalidateFileCache();
  EXPECT_EQ(FileCacheEpoch(), kNoFileCache);
}

TEST(FileCache, HasOneEpochUntilItIsInvalidated) {
  const FileCacheScope scope;
  const std::uint64_t first = FileCacheEpoch();
  EXPECT_NE(first, kNoFileCache);
  EXPECT_EQ(FileCacheEpoch(), first);
  InvalidateFileCache();
  const std::uint64_t second = FileCacheEpoch();
  EXPECT_NE(second, kNoFileCache);
  EXPECT_NE(second, first);
  EXPECT_EQ(FileCacheEpoch(), second);
}

TEST(FileCache, NoTwoScopesShareAnEpoch) {
  std::uint64_t earlier = kNoFileCache;
  for (int i = 0; i < 3; ++i) {
    const FileCacheScope scope;
    EXPECT_NE(FileCacheEpoch(), earlier);
    earlier = FileCacheEpoch();
  }
}

}  // namespace
}  // namespace KELP::Wifi
