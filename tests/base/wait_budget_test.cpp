#include "base/wait_budget.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace KELP::Wifi {
namespace {

using namespace std::chrono_literals;
using std::this_thread::sleep_for;

TEST(OutputWaitBudget, IsTenSecondsForTheLogAndFiveForTheReport) {
  // Other tests in this process may have spent a little.
  EXPECT_EQ(std::chrono::ceil<std::chrono::seconds>(LogWaitBudget().Remaining()), 10s);
  EXPECT_EQ(std::chrono::ceil<std::chrono::seconds>(ReportWaitBudget().Remaining()), 5s);
}

TEST(OutputWaitBudget, IsForAllWaitsTogether) {
  OutputWaitBudget budget(200ms);
  {
    OutputWait first(budget);
    EXPECT_GT(first.Remaining(), 0s);
    EXPECT_LE(first.Remaining(), 200ms);
    sleep_for(50ms);
    EXPECT_LE(first.Remaining(), 150ms);
  }
  EXPECT_LE(budget.Remaining(), 150ms);
  {
    OutputWait second(budget);
    EXPECT_LE(second.Remaining(), 150ms);
    sleep_for(150ms);
    EXPECT_EQ(second.Remaining(), 0s);
  }
  EXPECT_EQ(budget.Remaining(), 0s);
  EXPECT_EQ(OutputWait(budget).Remaining(), 0s);
}

TEST(OutputWaitBudget, IsSpentByASingleWaitUpToItsLimit) {
  OutputWaitBudget budget(1h);
  for (int i = 0; i < 2; ++i) {
    OutputWait wait(budget, 50ms);
    EXPECT_GT(wait.Remaining(), 0s);
    EXPECT_LE(wait.Remaining(), 50ms);
    sleep_for(50ms);
    EXPECT_EQ(wait.Remaining(), 0s);
  }
  EXPECT_LE(budget.Remaining(), 1h - 100ms);
  EXPECT_GT(budget.Remaining(), 30min);
}

TEST(OutputWaitBudget, IsNotSpentWhereNothingHasToWait) {
  OutputWaitBudget budget(1h);
  {
    const OutputWait wait(budget);
    sleep_for(20ms);
  }
  EXPECT_EQ(budget.Remaining(), 1h);
}

TEST(OutputWaitBudget, MayBeGivenUp) {
  OutputWaitBudget budget(1h);
  OutputWait wait(budget);
  EXPECT_GT(wait.Remaining(), 0s);
  budget.SpendAll();
  EXPECT_EQ(wait.Remaining(), 0s);
  EXPECT_EQ(budget.Remaining(), 0s);
}

}  // namespace
}  // namespace KELP::Wifi
