#include <gtest/gtest.h>

#include <cerrno>

#include "cli/console.h"
#include "tests/support/captured_streams.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi::Updater {
namespace {

TEST(ConsoleFailures, NothingIsWrittenBehindAPartThatFailed) {
  const testing_support::CapturedStream err(2);
  for (const int nth : {1, 2, 3}) {
    testing_support::FailingCalls calls;
    calls.Fail("write", EIO, nth);
    WriteToStandardError({"one ", "two ", "three\n"});
  }
  EXPECT_EQ(err.Text(), "one one two ");
}

TEST(ConsoleFailures, WriteThatTakesNothingLosesTheText) {
  const testing_support::CapturedStream err(2);
  {
    testing_support::FailingCalls calls;
    calls.WriteAtMost(0);
    WriteToStandardError({"lost"});
    EXPECT_EQ(calls.Made({"write"}).size(), 1U);
  }
  EXPECT_EQ(err.Text(), "");
}

TEST(ConsoleFailures, ShortAndInterruptedWritesLoseNothing) {
  const testing_support::CapturedStream err(2);
  testing_support::FailingCalls calls;
  calls.WriteAtMost(1);
  calls.Fail("write", EINTR, 2, 3);
  WriteToStandardError({"one ", "two"});
  EXPECT_EQ(err.Text(), "one two");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
