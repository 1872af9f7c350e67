#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "cli/failure_report.h"
#include "tests/support/captured_streams.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_calls.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using ::testing::ElementsAre;

TEST(FailureReportFailures, LogHearsOfTheFailureBeforeStandardError) {
  testing_support::TestDevice device;
  device.Run([] {
    const testing_support::CapturedStream err(2);
    testing_support::FailingCalls calls;
    ReportFailure("reason", "8000");
    EXPECT_THAT(calls.Made({"sendto", "write"}), ElementsAre("sendto", "write", "write", "write"));
    return 0;
  });
}

TEST(FailureReportFailures, EachChannelIsToldWhereTheOtherFails) {
  testing_support::TestDevice device;
  device.Run([] {
    const testing_support::CapturedStream err(2);
    {
      testing_support::FailingCalls calls;
      calls.Fail("sendto", ECONNREFUSED);
      ReportFailure("one", "8000");
      calls.Fail("write", EIO);
      ReportFailure("two", "8000");
    }
    EXPECT_EQ(err.Text(), "Failed to update config, error: one\n");
    return 0;
  });
  EXPECT_EQ(device.Log(), testing_support::LogLines{testing_support::Error(
                              954, "Failed to update config, error: two, buildNumber: 8000")});
}

TEST(FailureReportFailures, NeedsNoMemoryHoweverLongTheReason) {
  testing_support::TestDevice device;
  const std::string reason(50'000, 'r');
  device.Run([&] {
    const testing_support::CapturedStream err(2);
    {
      const testing_support::FailingAllocation failing;
      ReportFailure(reason.c_str(), "8000");
      EXPECT_EQ(testing_support::FailingAllocation::Failed(), 0);
    }
    EXPECT_EQ(err.Text(), "Failed to update config, error: " + reason + "\n");
    return 0;
  });
  EXPECT_EQ(device.Log(), testing_support::LogLines{testing_support::Error(
                              954, "Failed to update config, error: " + reason + ", buildNumber: 8000")});
}

TEST(FailureReportFailures, LogWithoutRoomIsTriedAgainOnceStandardErrorHasHeard) {
  testing_support::TestDevice device;
  device.Run([] {
    const testing_support::CapturedStream err(2);
    testing_support::FailingCalls calls;
    calls.Fail("sendto", EAGAIN);
    calls.Fail("setsockopt", EINVAL);  // ends the wait at once
    ReportFailure("reason", "8000");
    EXPECT_THAT(calls.Made({"sendto", "write"}), ElementsAre("sendto", "write", "write", "write", "sendto"));
    return 0;
  });
  EXPECT_EQ(device.Log(), testing_support::LogLines{testing_support::Error(
                              954, "Failed to update config, error: reason, buildNumber: 8000")});
}

TEST(FailureReportFailures, LongReasonIsCutWhereThereIsNoMemoryAndTheBuildNumberStays) {
  testing_support::TestDevice device;
  const std::string reason(140'000, 'r');
  device.Run([&] {
    const testing_support::CapturedStream err(2);
    {
      const testing_support::FailingAllocation failing;
      ReportFailure(reason.c_str(), "8000");
    }
    EXPECT_EQ(err.Text(), "Failed to update config, error: " + reason + "\n");
    return 0;
  });
  ASSERT_EQ(device.Log().size(), 1U);
  EXPECT_EQ(device.Log()[0].size(), std::string("err ").size() + 131'072);
  EXPECT_TRUE(device.Log()[0].ends_with("rrr, buildNumber: 8000"));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
