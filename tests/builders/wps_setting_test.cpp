#include "builders/wps_setting.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::LogLines;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_wps";

class WPSSettingTest : public ::testing::Test {
 protected:
  WPSSettingTest() { device_.WriteInfo({{"wps_pin", "41730582"}}); }

  WPSSetting Build(const WPSSetting& before = {}) {
    return device_.Run([&] {
      WPSSetting setting = before;
      BuildWPSPinSetting(UpdateContext{}, setting);
      return setting;
    });
  }
  WPSSetting Build(const Entries& entries) {
    device_.WriteEntries(kFile, entries);
    return Build();
  }

  testing_support::TestDevice device_;
};

TEST_F(WPSSettingTest, WithoutAFileThePinIsTheDevicesAndDisabled) {
  EXPECT_EQ(Build(), (WPSSetting{false, 0, {}, false, "41730582"}));
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(WPSSettingTest, FileWithoutKeysGivesTheSameAsNoFile) {
  EXPECT_EQ(Build(Entries{}), (WPSSetting{false, 0, {}, false, "41730582"}));
}

TEST_F(WPSSettingTest, BothValuesComeFromTheFile) {
  EXPECT_EQ(Build({{"is_wps_ap_pin_enabled", "yes"}, {"wps_ap_pin", "12345670"}}),
            (WPSSetting{false, 0, {}, true, "12345670"}));
}

TEST_F(WPSSettingTest, EachValueComesFromItsOwnKey) {
  EXPECT_EQ(Build({{"is_wps_ap_pin_enabled", "yes"}}), (WPSSetting{false, 0, {}, true, "41730582"}));
  EXPECT_EQ(Build({{"wps_ap_pin", "12345670"}}), (WPSSetting{false, 0, {}, false, "12345670"}));
}

TEST_F(WPSSettingTest, OnlyTheExactWordYesEnablesThePin) {
  for (const char* word : {"YES", "Yes", "yes ", " yes", "1", "true", "no", ""}) {
    EXPECT_FALSE(Build({{"is_wps_ap_pin_enabled", word}}).pin_enabled) << '"' << word << '"';
  }
}

TEST_F(WPSSettingTest, AnEmptyPinInTheFileStaysEmpty) {
  EXPECT_EQ(Build({{"wps_ap_pin", ""}}).pin, "");
}

TEST_F(WPSSettingTest, ThePinIsNeitherTrimmedNorValidated) {
  for (const char* pin : {" 123 ", "no pin at all", "1", "0000000000000000", "1234-5670"}) {
    EXPECT_EQ(Build({{"wps_ap_pin", pin}}).pin, pin);
  }
}

TEST_F(WPSSettingTest, TheDevicesPinIsNeitherTrimmedNorValidated) {
  device_.WriteInfo({{"wps_pin", " not a pin"}});
  EXPECT_EQ(Build().pin, " not a pin");
}

TEST_F(WPSSettingTest, KeysHaveNoGuestForm) {
  EXPECT_EQ(Build({{"guest_is_wps_ap_pin_enabled", "yes"}, {"guest_wps_ap_pin", "1"}}),
            (WPSSetting{false, 0, {}, false, "41730582"}));
}

TEST_F(WPSSettingTest, WhetherAndWhereWPSIsOnIsLeftAsItWas) {
  const WPSSetting before{true, 3, Util::RadioFrequency::Band5GHz_1, true, "old"};
  EXPECT_EQ(Build(before), (WPSSetting{true, 3, Util::RadioFrequency::Band5GHz_1, false, "41730582"}));
}

TEST_F(WPSSettingTest, WithoutADefaultPinTheRunFails) {
  device_.WriteInfo({{"kelpbios", "orchid"}});
  EXPECT_THROW(Build(), std::runtime_error);
  device_.Files().Remove("/usr/kelp/etc/info.conf");
  EXPECT_THROW(Build(), std::runtime_error);
}

TEST_F(WPSSettingTest, WithoutADefaultPinTheRunFailsEvenWhenTheFileHasAPin) {
  device_.WriteEntries(kFile, {{"is_wps_ap_pin_enabled", "yes"}, {"wps_ap_pin", "12345670"}});
  device_.Files().Remove("/usr/kelp/etc/info.conf");
  EXPECT_THROW(Build(), std::runtime_error);
}

}  // namespace
}  // namespace KELP::Wifi::Updater
