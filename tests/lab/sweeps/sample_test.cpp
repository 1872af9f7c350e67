#include "lab/sweeps/sample.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace lab::sweeps {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(DrawSample, HoldsOneOfEveryKind) {
  const std::vector<std::string> kinds{"a", "a", "b", "a", "c", "b"};
  std::set<std::string> drawn;
  for (const std::size_t place : DrawSample(kinds, 1, 7)) drawn.insert(kinds[place]);
  EXPECT_THAT(drawn, ElementsAre("a", "b", "c"));
}

TEST(DrawSample, IsTheSameForOneSeed) {
  const std::vector<std::string> kinds(100, "a");
  EXPECT_EQ(DrawSample(kinds, 50, 7).size(), 50U);
  EXPECT_EQ(DrawSample(kinds, 50, 7), DrawSample(kinds, 50, 7));
  EXPECT_NE(DrawSample(kinds, 50, 7), DrawSample(kinds, 50, 8));
}

TEST(DrawSample, IsEverythingWhereThereIsNoMore) {
  EXPECT_THAT(DrawSample({"a", "a", "b"}, 1000, 7), ElementsAre(0, 1, 2));
  EXPECT_THAT(DrawSample({}, 10, 7), IsEmpty());
}

}  // namespace
}  // namespace lab::sweeps
