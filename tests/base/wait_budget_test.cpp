#include "base/wait_budget.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/support/child_process.h"

namespace KELP::Wifi {
namespace {

using namespace std::chrono_literals;

TEST(OutputWaitBudget, IsTwoSecondsForAllWaitingTogether) {
  testing_support::ExpectInChild([&] {
    {
      const OutputWaitBudget first;
      EXPECT_LE(first.Remaining(), 2s);
      EXPECT_GT(first.Remaining(), 0s);
      std::this_thread::sleep_for(300ms);
      EXPECT_LE(first.Remaining(), 1700ms);
    }
    {
      const OutputWaitBudget second;
      EXPECT_LE(second.Remaining(), 1700ms);
      std::this_thread::sleep_for(1700ms);
      EXPECT_EQ(second.Remaining(), 0s);
    }
    const OutputWaitBudget third;
    EXPECT_EQ(third.Remaining(), 0s);
  });
}

TEST(OutputWaitBudget, IsNotSpentWhereNobodyWaits) {
  testing_support::ExpectInChild([&] {
    { const OutputWaitBudget none; }
    std::this_thread::sleep_for(2100ms);
    EXPECT_GT(OutputWaitBudget().Remaining(), 0s);
  });
}

}  // namespace
}  // namespace KELP::Wifi
