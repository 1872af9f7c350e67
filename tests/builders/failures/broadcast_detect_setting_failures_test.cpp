#include <gtest/gtest.h>

#include "builders/broadcast_detect_setting.h"
#include "tests/support/failing_platform.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::FailingPlatform;
using testing_support::LogLines;

TEST(BroadcastDetectSettingFailures, GivesTheDefaultsWhateverTheReadsThrow) {
  testing_support::TestDevice device;
  device.WriteEntries("/etc/hostapd/mac_filter/mf.setting",
                      {{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", "50"}});
  FailingPlatform platform;
  platform.legacy_reads_throw = true;
  EXPECT_EQ(device.Run([] { return BuildBroadcastDetectSetting({}); }),
            (BroadcastDetectSetting{{}, false, 100}));
  EXPECT_EQ(device.Log(), LogLines{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
