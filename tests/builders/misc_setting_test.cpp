#include "builders/misc_setting.h"

#include <gtest/gtest.h>

#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Error;
using testing_support::LogLines;

class MiscSettingTest : public ::testing::Test {
 protected:
  Daemon::MiscSetting Build(const std::string& topology, const UpdateContext& context = {}) {
    return device_.Run([&] { return BuildMiscSetting(context, topology); });
  }

  testing_support::TestDevice device_;
};

TEST_F(MiscSettingTest, WithoutLegacyFilesOnlyTheTopologyIsSet) {
  const Daemon::MiscSetting setting = Build("default");
  EXPECT_EQ(setting.netTopology, "default");
  EXPECT_EQ(setting.broadcastDetect, (BroadcastDetectSetting{{}, false, 100}));
  EXPECT_TRUE(setting.macFilterProfiles.empty());
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(MiscSettingTest, TheTopologyWordIsStoredAsItIs) {
  EXPECT_EQ(Build("bridge").netTopology, "bridge");
  EXPECT_EQ(Build("repeater").netTopology, "repeater");
}

TEST_F(MiscSettingTest, TheTopologyWordIsNotAskedForAgain) {
  device_.WriteInfo({{"net_topology", "bridge"}});
  EXPECT_EQ(Build("default").netTopology, "default");
  EXPECT_EQ(Build("default", {.meshRole = MeshRole::Repeater}).netTopology, "default");
}

TEST_F(MiscSettingTest, BroadcastDetectionAndFilterProfilesComeFromTheirLegacyFiles) {
  device_.WriteEntries("/etc/hostapd/mac_filter/mf.setting",
                       {{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", "64"}});
  device_.WriteEntries("/etc/hostapd/mac_filter/mf_guest.info", {{"policy", "disabled"}});
  device_.Files().Write("/etc/hostapd/mac_filter/mf_allow.conf",
                        "[1]\nenable=yes\ndesc=Printer\nmac=00:11:32:01:02:03\n");
  const Daemon::MiscSetting setting = Build("bridge");
  EXPECT_EQ(setting.broadcastDetect, (BroadcastDetectSetting{{}, true, 64}));
  ASSERT_EQ(setting.macFilterProfiles.size(), 1U);
  EXPECT_EQ(setting.macFilterProfiles.front(),
            (MACFilterProfile{0,
                              "Primary Network - Allow",
                              MACFilterPolicy::Allow,
                              {{"Printer", Util::MACAddress("00:11:32:01:02:03")}}}));
}

TEST_F(MiscSettingTest, FilteredStationsAreNoDevicesOfTheBroadcastDetection) {
  device_.WriteEntries("/etc/hostapd/mac_filter/mf.setting",
                       {{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", "64"}});
  device_.Files().Write("/etc/hostapd/mac_filter/mf_deny.conf", "[1]\nenable=yes\nmac=00:11:32:01:02:03\n");
  EXPECT_TRUE(Build("default").broadcastDetect.devices.empty());
}

TEST_F(MiscSettingTest, OneBadPartLeavesTheOtherAlone) {
  device_.WriteEntries("/etc/hostapd/mac_filter/mf.setting",
                       {{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", "64"}});
  device_.Files().MakeDirectory("/etc/hostapd/mac_filter/mf_deny.conf");
  const Daemon::MiscSetting setting = Build("default");
  EXPECT_EQ(setting.broadcastDetect, (BroadcastDetectSetting{{}, true, 64}));
  EXPECT_TRUE(setting.macFilterProfiles.empty());
  EXPECT_EQ(device_.Log(),
            LogLines{Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_deny.conf")});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
