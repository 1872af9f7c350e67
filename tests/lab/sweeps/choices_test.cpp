#include "lab/sweeps/choices.h"

#include <gtest/gtest.h>

#include <set>

namespace lab::sweeps {
namespace {

using Digits = std::vector<unsigned>;

std::vector<Digits> Visited(const Digits& radixes, const ChoiceLimits& limits = {}) {
  std::vector<Digits> visited;
  ForEachChoice(radixes, limits, [&](const Digits& digits) {
    visited.push_back(digits);
    return true;
  });
  return visited;
}

TEST(ForEachChoice, VisitsEveryCombinationOnce) {
  const std::vector<Digits> visited = Visited({2, 3});
  EXPECT_EQ(visited.size(), 6U);
  EXPECT_EQ(std::set(visited.begin(), visited.end()).size(), 6U);
}

TEST(ForEachChoice, VisitsTheOneWayToChooseNothing) {
  EXPECT_EQ(Visited({}), std::vector<Digits>{{}});
}

TEST(ForEachChoice, VisitsAllUpToTheLimit) {
  EXPECT_EQ(Visited(Digits(12, 2)).size(), 4096U);
}

TEST(ForEachChoice, DrawsTheSameSampleOfMoreWithTheSameSeed) {
  const Digits many(70, 2);
  EXPECT_EQ(Visited(many).size(), 1000U);
  EXPECT_EQ(Visited(many), Visited(many));
  EXPECT_NE(Visited(many), Visited(many, {.seed = 2}));
  for (const Digits& digits : Visited({5000, 3})) {
    EXPECT_LT(digits[0], 5000U);
    EXPECT_LT(digits[1], 3U);
  }
}

TEST(ForEachChoice, StopsWhenToldTo) {
  int visits = 0;
  EXPECT_FALSE(ForEachChoice({2, 2}, {}, [&](const Digits&) { return ++visits < 3; }));
  EXPECT_EQ(visits, 3);
}

}  // namespace
}  // namespace lab::sweeps
