#include <gtest/gtest.h>

#include "builders/guest_password_rotation.h"
#include "builders/network_setting.h"
#include "platform/exceptions.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_calls.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Error;
using testing_support::FailingAllocation;
using testing_support::FailingFormat;
using testing_support::LogLines;
using Fields = std::vector<std::string>;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2a:0b:0c";

TEST(SplitStringWithoutMemory, GivesNothingAndLogsTheTextWhereverItRunsOut) {
  testing_support::TestDevice device;
  const std::string text =
      "someone.with.a.long.name@example.org,%s@example.org,third.person.of.the.house@example.org";
  const std::string delimiters = ",;:!?*+-_#abcdefghijklmnopqrstuvw";  // too many to be kept without memory
  const Fields whole = SplitString(text, delimiters);
  int failures = 0;
  for (int succeeding = 0; succeeding < 1000; ++succeeding) {
    int failed = 0;
    Fields fields;
    device.Run([&] {
      const FailingAllocation failing(succeeding);
      fields = SplitString(text, delimiters);
      failed = FailingAllocation::Failed();
    });
    if (failed == 0) {
      EXPECT_EQ(fields, whole);
      EXPECT_EQ(device.Log(), LogLines{});
      break;
    }
    ++failures;
    EXPECT_EQ(fields, Fields{}) << succeeding;
    EXPECT_EQ(device.Log(), LogLines{Error(920, "Failed to split string: " + text)}) << succeeding;
  }
  EXPECT_GT(failures, 2);
}

TEST(SplitStringWithoutMemory, EmptyTextNeedsNone) {
  testing_support::TestDevice device;
  device.Run([] {
    const FailingAllocation failing;
    EXPECT_TRUE(SplitString("", ",").empty());
  });
  EXPECT_EQ(device.Log(), LogLines{});
}

TEST(FormatRotationDateFailure, ThrowsTheMessageOfAFormattingError) {
  const FailingFormat failing("%.4d-%.2d-%.2d %.2d:%.2d");
  try {
    FormatRotationDate("2023/7/4", "9", "5");
    ADD_FAILURE() << "nothing thrown";
  } catch (const RuntimeError& error) {
    EXPECT_STREQ(error.what(), "Error during formatting.: runtime error");
    EXPECT_EQ(error.code().value(), 2);
  }
}

TEST(FormatRotationDateFailure, LeavesTheBuilders) {
  testing_support::TestDevice device;
  device.WriteEntries(kFile, {{"guest_pwd_rotate_date_type", "0"}, {"guest_pwd_rotate_strength", "low"}});
  const FailingFormat failing("%.4d-");
  EXPECT_EQ(device.RunThrowing<RuntimeError>([] { return BuildGuestPasswordRotation(kFile); }),
            "Error during formatting.: runtime error");
  EXPECT_EQ(device.Log(), LogLines{});
  EXPECT_EQ(device.RunThrowing<RuntimeError>([] {
    NetworkSetting network;
    network.kind = NetworkKind::Guest;
    return AssembleNetworkSetting({}, network, {Util::RadioFrequency::AllBands}, -1);
  }),
            "Error during formatting.: runtime error");
}

TEST(FormatRotationDateFailure, DoesNotConcernThePrimaryNetwork) {
  testing_support::TestDevice device;
  const FailingFormat failing("%.4d-");
  const NetworkSetting network = device.Run([] {
    NetworkSetting primary;
    AssembleNetworkSetting({}, primary, {Util::RadioFrequency::AllBands}, -1);
    return primary;
  });
  EXPECT_EQ(network.allBands.guestPasswordRotation.date, "2021-01-01 00:00");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
