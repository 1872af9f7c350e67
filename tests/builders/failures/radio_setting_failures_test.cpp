#include <gtest/gtest.h>

#include <algorithm>

#include "builders/radio_setting.h"
#include "tests/support/failing_platform.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Error;
using testing_support::FailingPlatform;
using testing_support::LogLines;
using Util::RadioFrequency;

class RadioSettingFailuresTest : public ::testing::Test {
 protected:
  RadioSettingFailuresTest() {
    device_.WriteKernelMAC(3, "001132000003");
    device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:03",
                         {{"bandwidth", "20MHZ"}, {"mode", "n"}, {"tx_power", "low"}});
  }

  RadioSetting Build() {
    return device_.Run([] {
      return BuildRadioSetting({0, MeshRole::Standalone, Util::SupportedModel::CEDAR},
                               RadioFrequency::Band2_4GHz);
    });
  }

  testing_support::TestDevice device_;
};

TEST_F(RadioSettingFailuresTest, OnlyAPositiveAnswerDisablesUSB3) {
  FailingPlatform platform;
  platform.usb3_disabled = 0;
  EXPECT_TRUE(Build().usb3Enabled);
  for (const int answer : {1, 2, 1000}) {
    platform.usb3_disabled = answer;
    EXPECT_FALSE(Build().usb3Enabled) << answer;
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(RadioSettingFailuresTest, AnyNegativeAnswerIsLoggedAndEnablesUSB3) {
  FailingPlatform platform;
  for (const int answer : {-1, -2, -1000}) {
    platform.usb3_disabled = answer;
    EXPECT_TRUE(Build().usb3Enabled) << answer;
    EXPECT_EQ(device_.Log(), LogLines{Error(896, "Failed to call KELPUSBGetUSB3DisableUbootEnv")});
  }
}

TEST_F(RadioSettingFailuresTest, TheBootEnvironmentIsAskedOnceForEveryRadio) {
  FailingPlatform platform;
  platform.usb3_disabled = 0;
  Build();
  EXPECT_EQ(std::ranges::count(platform.questions, "usb3"), 1);
  Build();
  EXPECT_EQ(std::ranges::count(platform.questions, "usb3"), 2);
}

}  // namespace
}  // namespace KELP::Wifi::Updater
