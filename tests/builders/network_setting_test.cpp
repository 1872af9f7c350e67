#include "builders/network_setting.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using Util::RadioFrequency;
using Util::SupportedModel;
using Files = std::set<std::string>;
using Radios = std::vector<RadioFrequency>;

constexpr const char* kAllBandsFile = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
constexpr const char* kFile4 = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:04";
constexpr const char* kFile5 = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:05";

const Radios kDualBand{RadioFrequency{0}, RadioFrequency{1}, RadioFrequency{2}};

/// Words that cause no log line, for both networks.
Entries Quiet(Entries entries = {}) {
  entries.insert(entries.end(), {{"security", "disabled"},
                                 {"guest_security", "disabled"},
                                 {"pmf_mode", "disabled"},
                                 {"guest_pwd_rotate_date_type", "0"},
                                 {"guest_pwd_rotate_strength", "medium"}});
  return entries;
}

/// The first model: radio 1 at entry 4, radios 2 and 3 at entry 5.
class NetworkSettingTest : public ::testing::Test {
 protected:
  NetworkSettingTest() {
    device_.WriteKernelMAC(4, "001132000004");
    device_.WriteKernelMAC(5, "001132000005");
  }

  static NetworkSetting Primary() {
    NetworkSetting network;
    network.number = 0;
    network.name = "Primary Network";
    network.kind = NetworkKind{0};
    return network;
  }
  static NetworkSetting Guest() {
    NetworkSetting network;
    network.number = 1;
    network.name = "Guest Network";
    network.kind = NetworkKind{1};
    return network;
  }

  NetworkSetting Assemble(const NetworkSetting& seed, const Radios& radios = kDualBand,
                          std::int32_t profile = -1) {
    return device_.Run([&] {
      NetworkSetting network = seed;
      files_ = AssembleNetworkSetting(context_, network, radios, profile);
      return network;
    });
  }

  testing_support::TestDevice device_;
  UpdateContext context_{0, MeshRole::Standalone, SupportedModel::ORCHID};
  Files files_;
};

TEST_F(NetworkSettingTest, AllBandsMakesTheNetworksOwnBlockAndTheOthersItsList) {
  device_.WriteEntries(kAllBandsFile, Quiet({{"ssid", "YWxs"}, {"max_num_client", "10"}, {"dtim", "1"}}));
  device_.WriteEntries(kFile4, Quiet({{"ssid", "Zm91cg=="}, {"max_num_client", "14"}, {"dtim", "2"}}));
  device_.WriteEntries(kFile5, Quiet({{"ssid", "Zml2ZQ=="}, {"max_num_client", "15"}, {"dtim", "3"}}));
  const NetworkSetting network = Assemble(Primary());

  EXPECT_EQ(network.allBands.frequency, RadioFrequency{0});
  EXPECT_EQ(network.allBands.ssid, "all");
  EXPECT_EQ(network.allBands.max_num_client, 10);
  EXPECT_EQ(network.allBands.dtim, 1);

  ASSERT_EQ(network.featureSettings.size(), 2U);
  EXPECT_EQ(network.featureSettings[0].frequency, RadioFrequency{1});
  EXPECT_EQ(network.featureSettings[0].ssid, "four");
  EXPECT_EQ(network.featureSettings[0].max_num_client, 14);
  EXPECT_EQ(network.featureSettings[0].dtim, 2);
  EXPECT_EQ(network.featureSettings[1].frequency, RadioFrequency{2});
  EXPECT_EQ(network.featureSettings[1].ssid, "five");
  EXPECT_EQ(network.featureSettings[1].max_num_client, 15);
  EXPECT_EQ(network.featureSettings[1].dtim, 3);
}

TEST_F(NetworkSettingTest, EveryFieldOfTheAllBandsBlockIsSet) {
  device_.WriteEntries(kAllBandsFile, {{"enabled", "yes"},
                                       {"ssid", "YWxs"},
                                       {"display_ssid", "yes"},
                                       {"max_num_client", "10"},
                                       {"security", "ENTERPRISE_WPA2"},
                                       {"auth_server_ip", "10.0.0.2"},
                                       {"auth_server_Port", "1812"},
                                       {"schedule_enabled", "yes"},
                                       {"schedule", "1010"},
                                       {"pmf_mode", "required"},
                                       {"ampdu", "yes"},
                                       {"uapsd_enable", "yes"},
                                       {"ap_mumimo", "yes"},
                                       {"ap_enable_11r", "yes"},
                                       {"ap_mcast_translating", "yes"},
                                       {"country_abbrev_override_enable", "yes"},
                                       {"ap_isolation", "yes"},
                                       {"enable_ext_nss", "yes"},
                                       {"sc_disable_legacy_steering", "yes"},
                                       {"key_rotation", "60"},
                                       {"dtim", "1"}});
  FeatureSetting expected;
  expected.enabled = true;
  expected.ssid = "all";
  expected.display_ssid = true;
  expected.max_num_client = 10;
  expected.security = 9;
  expected.auth_server_ip = "10.0.0.2";
  expected.auth_server_port = 1812;
  expected.schedule_enabled = true;
  expected.schedule_kind = 1;
  expected.schedule = "1010";
  expected.mac_filter_profile_id = 2;
  expected.guestPasswordRotation = {false, 1, 1, "2021-01-01 00:00", "0,1,2,3,4,5,6", false, {}};
  expected.pmf_mode = 2;
  expected.ampdu = expected.uapsd_enable = expected.ap_mumimo = expected.ap_enable_11r = true;
  expected.ap_mcast_translating = expected.country_abbrev_override_enable = expected.ap_isolation = true;
  expected.preset_on = expected.enable_ext_nss = expected.sc_disable_legacy_steering = true;
  expected.key_rotation = 60;
  expected.dtim = 1;
  EXPECT_EQ(Assemble(Primary(), {RadioFrequency{0}}, 2).allBands, expected);
}

TEST_F(NetworkSettingTest, TheListKeepsTheOrderOfTheRadios) {
  const NetworkSetting network =
      Assemble(Primary(), {RadioFrequency{2}, RadioFrequency{0}, RadioFrequency{1}, RadioFrequency{3}});
  ASSERT_EQ(network.featureSettings.size(), 3U);
  EXPECT_EQ(network.featureSettings[0].frequency, RadioFrequency{2});
  EXPECT_EQ(network.featureSettings[1].frequency, RadioFrequency{1});
  EXPECT_EQ(network.featureSettings[2].frequency, RadioFrequency{3});
}

TEST_F(NetworkSettingTest, TriBandDeviceHasThreeInTheList) {
  context_.model = SupportedModel::LOTUS;
  device_.WriteKernelMAC(3, "001132000003");
  const NetworkSetting network =
      Assemble(Guest(), {RadioFrequency{0}, RadioFrequency{1}, RadioFrequency{3}, RadioFrequency{4}});
  ASSERT_EQ(network.featureSettings.size(), 3U);
  EXPECT_EQ(network.featureSettings[0].frequency, RadioFrequency{1});
  EXPECT_EQ(network.featureSettings[1].frequency, RadioFrequency{3});
  EXPECT_EQ(network.featureSettings[2].frequency, RadioFrequency{4});
  EXPECT_EQ(files_, (Files{kAllBandsFile, "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:03", kFile4, kFile5}));
}

TEST_F(NetworkSettingTest, WhatTheNetworkIsStaysAsItWasSeeded) {
  NetworkSetting seed = Guest();
  seed.number = 7;
  seed.name = "Some Network";
  const NetworkSetting network = Assemble(seed);
  EXPECT_EQ(network.number, 7);
  EXPECT_EQ(network.name, "Some Network");
  EXPECT_EQ(network.kind, NetworkKind{1});
}

TEST_F(NetworkSettingTest, TheKindDecidesWhoseKeysAreRead) {
  for (const char* file : {kAllBandsFile, kFile4, kFile5}) {
    device_.WriteEntries(file, Quiet({{"ssid", "S2VscCBIb21l"}, {"guest_ssid", "VmlzaXRvcnM="}}));
  }
  NetworkSetting primary = Primary();
  primary.number = 1;  // not the number
  const NetworkSetting read = Assemble(primary);
  EXPECT_EQ(read.allBands.ssid, "Kelp Home");
  EXPECT_EQ(read.featureSettings[1].ssid, "Kelp Home");
  const NetworkSetting guest = Assemble(Guest());
  EXPECT_EQ(guest.allBands.ssid, "Visitors");
  EXPECT_EQ(guest.featureSettings[1].ssid, "Visitors");
}

TEST_F(NetworkSettingTest, EveryBlockCarriesTheFilterProfile) {
  for (const std::int32_t profile : {-1, 0, 3}) {
    const NetworkSetting network = Assemble(Guest(), kDualBand, profile);
    EXPECT_EQ(network.allBands.mac_filter_profile_id, profile);
    EXPECT_EQ(network.featureSettings[0].mac_filter_profile_id, profile);
    EXPECT_EQ(network.featureSettings[1].mac_filter_profile_id, profile);
  }
}

// Smart connect

TEST_F(NetworkSettingTest, EachNetworkHasItsOwnSmartConnectKey) {
  device_.WriteEntries(kAllBandsFile, Quiet({{"smartconnect_enabled", "yes"}}));
  EXPECT_TRUE(Assemble(Primary()).smartConnect);
  EXPECT_FALSE(Assemble(Guest()).smartConnect);
  device_.WriteEntries(kAllBandsFile, Quiet({{"smartconnect_guest_enabled", "yes"}}));
  EXPECT_FALSE(Assemble(Primary()).smartConnect);
  EXPECT_TRUE(Assemble(Guest()).smartConnect);
}

TEST_F(NetworkSettingTest, SmartConnectKeysAreReadWithoutAGuestPrefix) {
  device_.WriteEntries(kAllBandsFile, Quiet({{"guest_smartconnect_enabled", "yes"},
                                             {"guest_smartconnect_guest_enabled", "yes"}}));
  EXPECT_FALSE(Assemble(Guest()).smartConnect);
  EXPECT_FALSE(Assemble(Primary()).smartConnect);
}

TEST_F(NetworkSettingTest, OnlyTheExactWordYesSetsSmartConnect) {
  for (const char* word : {"YES", "Yes", "yes ", " yes", "1", "true", "no", ""}) {
    device_.WriteEntries(kAllBandsFile,
                         Quiet({{"smartconnect_enabled", word}, {"smartconnect_guest_enabled", word}}));
    EXPECT_FALSE(Assemble(Primary()).smartConnect) << '"' << word << '"';
    EXPECT_FALSE(Assemble(Guest()).smartConnect) << '"' << word << '"';
  }
}

TEST_F(NetworkSettingTest, SmartConnectStandsInTheAllBandsFileOnly) {
  for (const char* file : {kFile4, kFile5}) {
    device_.WriteEntries(file,
                         Quiet({{"smartconnect_enabled", "yes"}, {"smartconnect_guest_enabled", "yes"}}));
  }
  EXPECT_FALSE(Assemble(Primary()).smartConnect);
  EXPECT_FALSE(Assemble(Guest()).smartConnect);
}

TEST_F(NetworkSettingTest, SmartConnectIsNotUndoneByTheOtherRadios) {
  device_.WriteEntries(kAllBandsFile, Quiet({{"smartconnect_enabled", "yes"}}));
  device_.WriteEntries(kFile4, Quiet({{"smartconnect_enabled", "no"}}));
  device_.WriteEntries(kFile5, Quiet({{"smartconnect_enabled", "no"}}));
  EXPECT_TRUE(Assemble(Primary()).smartConnect);
}

// Guest password rotation

TEST_F(NetworkSettingTest, GuestHasTheRotationOfEachFileInEachBlock) {
  const auto write = [&](const char* file, const std::string& week_day) {
    device_.WriteEntries(file, {{"guest_pwd_rotate_enable", "yes"},
                                {"guest_pwd_rotate_date_type", "1"},
                                {"guest_pwd_rotate_strength", "high"},
                                {"guest_pwd_rotate_date", "2023/7/4"},
                                {"guest_pwd_rotate_hour", "9"},
                                {"guest_pwd_rotate_minute", "5"},
                                {"guest_pwd_rotate_week_day", week_day},
                                {"guest_pwd_rotate_notify_enable", "yes"},
                                {"guest_pwd_rotate_mail_list", "a@example.org"}});
  };
  write(kAllBandsFile, "0");
  write(kFile4, "4");
  write(kFile5, "5");
  const NetworkSetting network = Assemble(Guest());
  GuestPasswordRotation expected{true, 0, 2, "2023-07-04 09:05", "0", true, {"a@example.org"}};
  EXPECT_EQ(network.allBands.guestPasswordRotation, expected);
  expected.week_day = "4";
  EXPECT_EQ(network.featureSettings[0].guestPasswordRotation, expected);
  expected.week_day = "5";
  EXPECT_EQ(network.featureSettings[1].guestPasswordRotation, expected);
}

TEST_F(NetworkSettingTest, GuestWithoutRotationKeysHasTheRotationsFallBacksAndNotTheDefaults) {
  for (const char* file : {kAllBandsFile, kFile4, kFile5}) device_.WriteEntries(file, Quiet());
  const NetworkSetting network = Assemble(Guest());
  const GuestPasswordRotation expected{false, 1, 1, "2021-01-01 00:00", "", false, {}};
  EXPECT_EQ(network.allBands.guestPasswordRotation, expected);
  EXPECT_EQ(network.featureSettings[0].guestPasswordRotation, expected);
  EXPECT_EQ(network.featureSettings[1].guestPasswordRotation, expected);
}

TEST_F(NetworkSettingTest, PrimaryKeepsTheDefaultsWhateverTheRotationKeysSay) {
  for (const char* file : {kAllBandsFile, kFile4, kFile5}) {
    device_.WriteEntries(file, {{"guest_pwd_rotate_enable", "yes"}, {"guest_pwd_rotate_week_day", "1"}});
  }
  const NetworkSetting network = Assemble(Primary());
  const GuestPasswordRotation expected{false, 1, 1, "2021-01-01 00:00", "0,1,2,3,4,5,6", false, {}};
  EXPECT_EQ(network.allBands.guestPasswordRotation, expected);
  EXPECT_EQ(network.featureSettings[0].guestPasswordRotation, expected);
  EXPECT_EQ(network.featureSettings[1].guestPasswordRotation, expected);
}

// Log lines

TEST_F(NetworkSettingTest, PrimaryLogsOncePerUnknownWordAndRadio) {
  device_.WriteEntries(kAllBandsFile, {{"security", "s0"}, {"pmf_mode", "p0"}, {"password", "x0"}});
  device_.WriteEntries(kFile4, {{"security", "s4"}, {"pmf_mode", "p4"}, {"password", "x4"}});
  Assemble(Primary(), {RadioFrequency{0}, RadioFrequency{1}});
  EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: s0, select wpa2."),
                                     Error(589, "Failed to decrypt ssid with x0"),
                                     Error(776, "Invalid pmf mode: p0, select disabled."),
                                     Error(760, "Invalid security mode: s4, select wpa2."),
                                     Error(589, "Failed to decrypt ssid with x4"),
                                     Error(776, "Invalid pmf mode: p4, select disabled.")}));
}

TEST_F(NetworkSettingTest, GuestsRotationLinesComeBehindThoseOfEachRadio) {
  device_.WriteEntries(kAllBandsFile, {{"guest_security", "s0"},
                                       {"pmf_mode", "p0"},
                                       {"guest_password", "x0"},
                                       {"guest_pwd_rotate_date_type", "d0"},
                                       {"guest_pwd_rotate_strength", "t0"}});
  device_.WriteEntries(kFile4, {{"guest_security", "s4"},
                                {"pmf_mode", "p4"},
                                {"guest_password", "x4"},
                                {"guest_pwd_rotate_date_type", "d4"},
                                {"guest_pwd_rotate_strength", "t4"}});
  Assemble(Guest(), {RadioFrequency{0}, RadioFrequency{1}});
  EXPECT_EQ(
      device_.Log(),
      (LogLines{
          Error(760, "Invalid security mode: s0, select wpa2."), Error(589, "Failed to decrypt ssid with x0"),
          Error(776, "Invalid pmf mode: p0, select disabled."),
          Error(855, "Invalid mode: d0, select regular."), Error(869, "Invalid value: t0, select medium."),
          Error(760, "Invalid security mode: s4, select wpa2."), Error(589, "Failed to decrypt ssid with x4"),
          Error(776, "Invalid pmf mode: p4, select disabled."),
          Error(855, "Invalid mode: d4, select regular."), Error(869, "Invalid value: t4, select medium.")}));
}

// The files that were used

TEST_F(NetworkSettingTest, GivesThePathsOfTheFilesThatItUsed) {
  Assemble(Primary());
  EXPECT_EQ(files_, (Files{kAllBandsFile, kFile4, kFile5}));
}

TEST_F(NetworkSettingTest, RadiosThatShareAFileGiveItOnce) {
  Assemble(Primary(), {RadioFrequency{0}, RadioFrequency{2}, RadioFrequency{3}});
  EXPECT_EQ(files_, (Files{kAllBandsFile, kFile5}));
}

TEST_F(NetworkSettingTest, FirstModelsRadio4UsesThePlaceholdersFile) {
  context_.meshRole = MeshRole::Repeater;
  Assemble(Primary(), {RadioFrequency{0}, RadioFrequency{1}, RadioFrequency{3}, RadioFrequency{4}});
  EXPECT_EQ(files_, (Files{kAllBandsFile, kFile4, kFile5, "/usr/kelp/etc/wifi/wifi_ap_11:11:11:11:11:11"}));
}

TEST_F(NetworkSettingTest, MissingKernelEntryFails) {
  device_.Files().Remove("/proc/sys/kernel/kelp_mac_address5");
  EXPECT_EQ(device_.RunThrowing<std::runtime_error>([&] {
    NetworkSetting network = Primary();
    return AssembleNetworkSetting(context_, network, kDualBand, -1);
  }),
            "Failed to get bssid from kelp_mac_address");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
