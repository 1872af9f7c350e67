#include "base/patience.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/support/child_process.h"

namespace KELP::Wifi {
namespace {

using namespace std::chrono_literals;

TEST(Patience, IsTwoSecondsForAllWaitingTogether) {
  testing_support::ExpectInChild([&] {
    {
      const Patience first;
      EXPECT_LE(first.Left(), 2s);
      EXPECT_GT(first.Left(), 0s);
      std::this_thread::sleep_for(300ms);
      EXPECT_LE(first.Left(), 1700ms);
    }
    {
      const Patience second;
      EXPECT_LE(second.Left(), 1700ms);
      std::this_thread::sleep_for(1700ms);
      EXPECT_EQ(second.Left(), 0s);
    }
    const Patience third;
    EXPECT_EQ(third.Left(), 0s);
  });
}

TEST(Patience, IsNotSpentWhereNobodyWaits) {
  testing_support::ExpectInChild([&] {
    { const Patience none; }
    std::this_thread::sleep_for(2100ms);
    EXPECT_GT(Patience().Left(), 0s);
  });
}

}  // namespace
}  // namespace KELP::Wifi
