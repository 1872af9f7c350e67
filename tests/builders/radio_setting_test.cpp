#include "builders/radio_setting.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "lab/images/boot_environment.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using Util::RadioFrequency;
using Util::SupportedModel;

// GetRadioFrequencies

using Radios = std::vector<RadioFrequency>;

const Radios kDualBand{RadioFrequency{0}, RadioFrequency{1}, RadioFrequency{2}};
const Radios kTriBand{RadioFrequency{0}, RadioFrequency{1}, RadioFrequency{3}, RadioFrequency{4}};

TEST(GetRadioFrequencies, FirstModelAloneIsDualBand) {
  EXPECT_EQ(GetRadioFrequencies({0, MeshRole::Standalone, SupportedModel::ORCHID}), kDualBand);
}

TEST(GetRadioFrequencies, FirstModelInAMeshIsTriBand) {
  EXPECT_EQ(GetRadioFrequencies({0, MeshRole::MeshRouter, SupportedModel::ORCHID}), kTriBand);
  EXPECT_EQ(GetRadioFrequencies({0, MeshRole::Repeater, SupportedModel::ORCHID}), kTriBand);
}

TEST(GetRadioFrequencies, EveryOtherModelIsTriBandInEveryRole) {
  for (const SupportedModel model :
       {SupportedModel::LOTUS, SupportedModel::MAPLE, SupportedModel::CEDAR, SupportedModel::Error}) {
    for (const MeshRole role : {MeshRole::Standalone, MeshRole::MeshRouter, MeshRole::Repeater}) {
      EXPECT_EQ(GetRadioFrequencies({0, role, model}), kTriBand);
    }
  }
}

// BuildRadioSetting

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:04";

/// Radio 1 of the first model: its entry is 4.
class RadioSettingTest : public ::testing::Test {
 protected:
  RadioSettingTest() {
    device_.WriteKernelMAC(4, "001132000004");
    lab::InstallBootEnvironment(device_.Files(), {});
  }

  RadioSetting Build(RadioFrequency radio = RadioFrequency::Band2_4GHz) {
    return device_.Run([&] { return BuildRadioSetting(context_, radio); });
  }
  RadioSetting Build(const Entries& entries) {
    device_.WriteEntries(kFile, entries);
    return Build();
  }
  /// Without lines of unknown words.
  RadioSetting BuildQuietly(const std::string& key, const std::string& value) {
    return Build({{key, value}, {"bandwidth", "20_40MHZ"}, {"mode", "bgn"}, {"tx_power", "high"}});
  }

  static RadioSetting Defaults() {
    RadioSetting setting;
    setting.frequency = RadioFrequency::Band2_4GHz;
    setting.channel = 0;
    setting.channel2 = 0;
    setting.bandwidth = 2;
    setting.mode = 1;
    setting.txPower = 2;
    setting.allowDFSChannels = false;
    setting.usb3Enabled = true;
    setting.thirdFlag = false;
    setting.fourthFlag = true;
    return setting;
  }

  testing_support::TestDevice device_;
  UpdateContext context_{0, MeshRole::Standalone, SupportedModel::ORCHID};
};

TEST_F(RadioSettingTest, FileWithoutKeysGivesTheDefaultsAndThreeLinesInOrder) {
  const LogLines lines{Error(838, "Invalid bandwidth: , select 20_40."),
                       Error(795, "Invalid wireless mode: ."),
                       Error(811, "Invalid tx power: , select high.")};
  EXPECT_EQ(Build(Entries{}), Defaults());
  EXPECT_EQ(device_.Log(), lines);
  device_.Files().Remove(kFile);
  EXPECT_EQ(Build(), Defaults());
  EXPECT_EQ(device_.Log(), lines);
}

TEST_F(RadioSettingTest, EveryValueComesFromItsKey) {
  RadioSetting expected;
  expected.frequency = RadioFrequency::Band2_4GHz;
  expected.channel = 11;
  expected.channel2 = 7;
  expected.bandwidth = 0;
  expected.mode = 0;
  expected.txPower = 0;
  expected.allowDFSChannels = true;
  expected.usb3Enabled = true;
  expected.thirdFlag = false;
  expected.fourthFlag = true;
  EXPECT_EQ(Build({{"channel", "11"},
                   {"channel2", "7"},
                   {"bandwidth", "20MHZ"},
                   {"mode", "n"},
                   {"tx_power", "low"},
                   {"allow_dfs_channels", "yes"}}),
            expected);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(RadioSettingTest, EachKeyChangesItsMemberAndNoOther) {
  RadioSetting expected = Defaults();
  expected.channel = 5;
  EXPECT_EQ(BuildQuietly("channel", "5"), expected);

  expected = Defaults();
  expected.channel2 = 5;
  EXPECT_EQ(BuildQuietly("channel2", "5"), expected);

  expected = Defaults();
  expected.bandwidth = 3;
  EXPECT_EQ(BuildQuietly("bandwidth", "20_40_80MHZ"), expected);

  expected = Defaults();
  expected.bandwidth = 1;
  EXPECT_EQ(BuildQuietly("force_24g_40mhz", "yes"), expected);

  expected = Defaults();
  expected.mode = 5;
  EXPECT_EQ(BuildQuietly("mode", "an+ac"), expected);

  expected = Defaults();
  expected.txPower = 1;
  EXPECT_EQ(BuildQuietly("tx_power", "medium"), expected);

  expected = Defaults();
  expected.allowDFSChannels = true;
  EXPECT_EQ(BuildQuietly("allow_dfs_channels", "yes"), expected);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(RadioSettingTest, GuestKeysAndOtherKeysSetNothing) {
  EXPECT_EQ(Build({{"guest_channel", "5"},
                   {"guest_channel2", "5"},
                   {"guest_bandwidth", "20MHZ"},
                   {"guest_mode", "n"},
                   {"guest_tx_power", "low"},
                   {"guest_allow_dfs_channels", "yes"},
                   {"frequency", "3"},
                   {"usb3", "no"},
                   {"thirdFlag", "yes"},
                   {"fourthFlag", "no"},
                   {"bandwidth", "20_40MHZ"},
                   {"mode", "bgn"},
                   {"tx_power", "high"}}),
            Defaults());
}

TEST_F(RadioSettingTest, ChannelsAreTheDecimalNumberAtTheStartOfTheirText) {
  const std::pair<const char*, std::int32_t> kTexts[] = {
      {" 36", 36},
      {"36 (auto)", 36},
      {"0x10", 0},
      {"-1", -1},
      {"+40", 40},
      {"149+153", 149},
      {"064", 64},
      {"2147483647", 2147483647},
      {"-2147483648", std::numeric_limits<std::int32_t>::min()}};
  for (const auto& [text, value] : kTexts) {
    EXPECT_EQ(BuildQuietly("channel", text).channel, value) << text;
    EXPECT_EQ(BuildQuietly("channel2", text).channel2, value) << text;
  }
}

TEST_F(RadioSettingTest, ChannelsThatAreNoNumberAre0) {
  for (const char* text : {"", "auto", "x36", "-", "3000000000", "2147483648", "-2147483649"}) {
    EXPECT_EQ(BuildQuietly("channel", text), Defaults()) << text;
    EXPECT_EQ(BuildQuietly("channel2", text), Defaults()) << text;
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(RadioSettingTest, OnlyTheExactWordYesAllowsDFSChannels) {
  for (const char* word : {"Yes", "YES", "yes ", " yes", "1", "true", "no", ""}) {
    EXPECT_EQ(BuildQuietly("allow_dfs_channels", word), Defaults()) << '"' << word << '"';
  }
}

TEST_F(RadioSettingTest, UnknownWordsGiveTheirFallBacksWithALineEach) {
  EXPECT_EQ(Build({{"tx_power", "max"}, {"mode", "ax"}, {"bandwidth", "40MHZ"}}), Defaults());
  EXPECT_EQ(device_.Log(), (LogLines{Error(838, "Invalid bandwidth: 40MHZ, select 20_40."),
                                     Error(795, "Invalid wireless mode: ax."),
                                     Error(811, "Invalid tx power: max, select high.")}));
}

TEST_F(RadioSettingTest, FallBackOfTheModeAndForced40MHzFollowFromTheRadio) {
  context_.model = SupportedModel::LOTUS;
  device_.WriteKernelMAC(3, "001132000003");
  device_.WriteKernelMAC(5, "001132000005");
  for (const char* digit : {"3", "4", "5"}) {
    device_.WriteEntries(std::string("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:0") + digit,
                         {{"force_24g_40mhz", "yes"}, {"bandwidth", "80_80MHZ"}, {"tx_power", "low"}});
  }
  const RadioSetting radio_1 = Build(RadioFrequency::Band2_4GHz);
  EXPECT_EQ(radio_1.bandwidth, 1);
  EXPECT_EQ(radio_1.mode, 1);
  for (const RadioFrequency radio :
       {RadioFrequency::Band5GHz, RadioFrequency::Band5GHz_1, RadioFrequency::Band5GHz_2}) {
    const RadioSetting setting = Build(radio);
    EXPECT_EQ(setting.frequency, radio);
    EXPECT_EQ(setting.bandwidth, 5);
    EXPECT_EQ(setting.mode, 4);
    EXPECT_EQ(device_.Log(), LogLines{Error(795, "Invalid wireless mode: .")});
  }
}

TEST_F(RadioSettingTest, EachRadioReadsItsOwnFile) {
  context_.model = SupportedModel::LOTUS;
  device_.WriteKernelMAC(3, "001132000003");
  device_.WriteKernelMAC(5, "001132000005");
  device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00", {{"channel", "100"}});
  device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:03", {{"channel", "3"}});
  device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:04", {{"channel", "4"}});
  device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:05", {{"channel", "5"}});
  EXPECT_EQ(Build(RadioFrequency::Band2_4GHz).channel, 3);
  EXPECT_EQ(Build(RadioFrequency::Band5GHz_1).channel, 4);
  EXPECT_EQ(Build(RadioFrequency::Band5GHz_2).channel, 5);
}

TEST_F(RadioSettingTest, SecondRadioOfTheFirstModelInAMeshReadsThePlaceholdersFile) {
  context_.meshRole = MeshRole::MeshRouter;
  device_.WriteKernelMAC(5, "001132000005");
  device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_11:11:11:11:11:11", {{"channel", "44"}});
  device_.WriteEntries("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:05", {{"channel", "36"}});
  EXPECT_EQ(Build(RadioFrequency::Band5GHz_1).channel, 36);
  EXPECT_EQ(Build(RadioFrequency::Band5GHz_2).channel, 44);
}

TEST_F(RadioSettingTest, MissingKernelEntryFails) {
  device_.Files().Remove("/proc/sys/kernel/kelp_mac_address4");
  EXPECT_EQ(device_.RunThrowing<std::runtime_error>(
                [&] { return BuildRadioSetting(context_, RadioFrequency::Band2_4GHz); }),
            "Failed to get bssid from kelp_mac_address");
  EXPECT_EQ(device_.Log(), LogLines{});
}

// USB 3

TEST_F(RadioSettingTest, USB3FollowsTheBootEnvironment) {
  lab::InstallBootEnvironment(device_.Files(), {{"usb3_disable", "1"}});
  EXPECT_FALSE(BuildQuietly("channel", "1").usb3Enabled);
  lab::InstallBootEnvironment(device_.Files(), {{"usb3_disable", "0"}});
  EXPECT_TRUE(BuildQuietly("channel", "1").usb3Enabled);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(RadioSettingTest, UnreadableBootEnvironmentIsLoggedOncePerRadioAndEnablesUSB3) {
  device_.Files().Remove("/etc/fw_env.config");
  context_.model = SupportedModel::LOTUS;
  device_.WriteKernelMAC(3, "001132000003");
  device_.WriteKernelMAC(5, "001132000005");
  for (const char* digit : {"3", "4", "5"}) {
    device_.WriteEntries(std::string("/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:0") + digit,
                         {{"bandwidth", "20MHZ"}, {"mode", "n"}, {"tx_power", "low"}});
  }
  const auto settings = device_.Run([&] {
    std::vector<RadioSetting> built;
    for (const RadioFrequency radio : GetRadioFrequencies(context_)) {
      if (radio != RadioFrequency::AllBands) built.push_back(BuildRadioSetting(context_, radio));
    }
    return built;
  });
  ASSERT_EQ(settings.size(), 3U);
  for (const RadioSetting& setting : settings) EXPECT_TRUE(setting.usb3Enabled);
  const std::string line = Error(896, "Failed to call KELPUSBGetUSB3DisableUbootEnv");
  EXPECT_EQ(device_.Log(), (LogLines{line, line, line}));
}

TEST_F(RadioSettingTest, USB3sLineComesLast) {
  device_.Files().Remove("/etc/fw_env.config");
  Build(Entries{});
  EXPECT_EQ(device_.Log(),
            (LogLines{Error(838, "Invalid bandwidth: , select 20_40."),
                      Error(795, "Invalid wireless mode: ."), Error(811, "Invalid tx power: , select high."),
                      Error(896, "Failed to call KELPUSBGetUSB3DisableUbootEnv")}));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
