#include "builders/broadcast_detect_setting.h"

#include <gtest/gtest.h>

#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::LogLines;

constexpr const char* kFile = "/etc/hostapd/mac_filter/mf.setting";

BroadcastDetectSetting Setting(bool enabled, std::int32_t threshold) {
  BroadcastDetectSetting setting;
  setting.enabled = enabled;
  setting.threshold = threshold;
  return setting;
}

const BroadcastDetectSetting kDefault = Setting(false, 100);

class BroadcastDetectSettingTest : public ::testing::Test {
 protected:
  BroadcastDetectSetting Build() {
    return device_.Run([] { return BuildBroadcastDetectSetting(UpdateContext{}); });
  }
  BroadcastDetectSetting Build(const Entries& entries) {
    device_.WriteEntries(kFile, entries);
    return Build();
  }
  BroadcastDetectSetting BuildWithThreshold(const std::string& threshold) {
    return Build({{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", threshold}});
  }

  testing_support::TestDevice device_;
};

TEST_F(BroadcastDetectSettingTest, AbsentFileGivesTheDefaultsAndNoLine) {
  EXPECT_EQ(Build(), kDefault);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(BroadcastDetectSettingTest, FileWithoutKeysGivesTheDefaultsAndNoLine) {
  EXPECT_EQ(Build({}), kDefault);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(BroadcastDetectSettingTest, DirectoryInTheFilesPlaceGivesTheDefaults) {
  device_.Files().MakeDirectory(kFile);
  EXPECT_EQ(Build(), kDefault);
}

TEST_F(BroadcastDetectSettingTest, BothValuesComeFromTheFile) {
  EXPECT_EQ(BuildWithThreshold("50"), Setting(true, 50));
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(BroadcastDetectSettingTest, MissingThresholdDiscardsTheEnabledFlag) {
  EXPECT_EQ(Build({{"broadcast_detect_enabled", "yes"}}), kDefault);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(BroadcastDetectSettingTest, ThresholdThatIsNoNumberDiscardsTheEnabledFlag) {
  for (const char* threshold : {"", " ", "abc", "x50", "-", "+", "- 5", "--5"}) {
    EXPECT_EQ(BuildWithThreshold(threshold), kDefault) << '"' << threshold << '"';
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(BroadcastDetectSettingTest, ThresholdBeyond32BitsGivesTheDefaults) {
  for (const char* threshold : {"2147483648", "-2147483649", "123456789012", "99999999999999999999999"}) {
    EXPECT_EQ(BuildWithThreshold(threshold), kDefault) << threshold;
  }
}

TEST_F(BroadcastDetectSettingTest, ThresholdAtTheEndsOf32BitsIsTaken) {
  EXPECT_EQ(BuildWithThreshold("2147483647"), Setting(true, 2147483647));
  EXPECT_EQ(BuildWithThreshold("-2147483648"), Setting(true, -2147483647 - 1));
}

TEST_F(BroadcastDetectSettingTest, ThresholdIsTakenAsItIsWithoutARangeTest) {
  EXPECT_EQ(BuildWithThreshold("0"), Setting(true, 0));
  EXPECT_EQ(BuildWithThreshold("-5"), Setting(true, -5));
}

TEST_F(BroadcastDetectSettingTest, ThresholdIsTheDecimalNumberAtTheStartOfItsText) {
  EXPECT_EQ(BuildWithThreshold("50 packets"), Setting(true, 50));
  EXPECT_EQ(BuildWithThreshold("50;60"), Setting(true, 50));
  EXPECT_EQ(BuildWithThreshold(" \t50"), Setting(true, 50));
  EXPECT_EQ(BuildWithThreshold("+50"), Setting(true, 50));
  EXPECT_EQ(BuildWithThreshold("050"), Setting(true, 50));
  EXPECT_EQ(BuildWithThreshold("0x50"), Setting(true, 0));
}

TEST_F(BroadcastDetectSettingTest, OnlyTheExactWordYesEnables) {
  for (const char* word : {"Yes", "YES", "yes ", " yes", "ye", "yess", "1", "true", "on", "no", ""}) {
    EXPECT_EQ(Build({{"broadcast_detect_enabled", word}, {"broadcast_threshold", "70"}}), Setting(false, 70))
        << '"' << word << '"';
  }
}

TEST_F(BroadcastDetectSettingTest, MissingFlagKeepsTheThreshold) {
  EXPECT_EQ(Build({{"broadcast_threshold", "70"}}), Setting(false, 70));
}

TEST_F(BroadcastDetectSettingTest, NoKeyOfTheFileMakesDevices) {
  const BroadcastDetectSetting setting = Build({{"broadcast_detect_enabled", "yes"},
                                                {"broadcast_threshold", "50"},
                                                {"devices", "00:11:32:00:00:01"},
                                                {"mac", "00:11:32:00:00:01"}});
  EXPECT_TRUE(setting.devices.empty());
}

TEST_F(BroadcastDetectSettingTest, OtherFilesOfTheFolderAreNotRead) {
  for (const char* name : {"mf.info", "mf_guest.info", "mf_deny.conf", "mf_allow.conf"}) {
    device_.WriteEntries(std::string("/etc/hostapd/mac_filter/") + name,
                         {{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", "7"}});
  }
  EXPECT_EQ(Build(), kDefault);
}

}  // namespace
}  // namespace KELP::Wifi::Updater
