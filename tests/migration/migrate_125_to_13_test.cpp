// What the files of a household's radios decide together. Whole documents, the skip rule, failures, the
// archive and the order of the log's lines are end-to-end tests' matter.
#include "migration/migrate_125_to_13.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/migration/legacy_household.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::Error;
using testing_support::LegacyHousehold;
using testing_support::LogLines;
using testing_support::Warning;
using Names = std::vector<std::string>;

void Migrate(LegacyHousehold& device) {
  device.Run([&] { Migrate125To13(device.context); });
}

/// Radios have power "medium" (1) where their entries do not say otherwise.
struct Case {
  const char* name;
  bool is_mesh;       // three radios, not two
  Entries all_bands;  // entries of the access-point files
  Entries first;      // the 2.4 GHz radio
  Entries second;     // the 5 GHz radio, or the first of two
  Entries third;      // the second 5 GHz radio
  bool wps_enabled;
  int wps_band;
  std::vector<int> powers;
  bool allows_dfs = false;
  LogLines lines = {};
};

const Entries kWPS{{"ap_enable_wps", "yes"}};
const Entries kSmart{{"smartconnect_enabled", "yes"}};
const Entries kAllOfIt{{"smartconnect_enabled", "yes"},
                       {"ap_enable_wps", "yes"},
                       {"allow_dfs_channels", "yes"},
                       {"tx_power", "low"}};
const Entries kNotSmart{{"smartconnect_enabled", "YES"},
                        {"ap_enable_wps", "YES"},
                        {"allow_dfs_channels", "yes"},
                        {"tx_power", "low"}};
const Entries kGuestsSmart{{"smartconnect_guest_enabled", "yes"},
                           {"ap_enable_wps", "yes"},
                           {"allow_dfs_channels", "yes"},
                           {"tx_power", "low"}};
const Entries kLoud{{"ap_enable_wps", "yes"}, {"allow_dfs_channels", "yes"}, {"tx_power", "high"}};

std::string NoPower(const std::string& word) {
  return Error(811, "Invalid tx power: " + word + ", select high.");
}

Entries With(Entries entries, const std::string& key, const std::string& value) {
  entries.emplace_back(key, value);
  return entries;
}

TEST(Migrate125To13, FirstRadioThatHasWPSGivesItsBandAndSmartConnectLetsTheAllBandsFileDecide) {
  const std::vector<int> two(2, 1);
  const std::vector<int> three(3, 1);
  const Case cases[] = {
      {"no WPS", true, {}, {}, {}, {}, false, 0, three},
      {"WPS in the all-bands file only", true, kWPS, {}, {}, {}, false, 0, three},
      {"radio 1", true, {}, kWPS, {}, {}, true, 1, three},
      {"radio 2", false, {}, {}, kWPS, {}, true, 2, two},
      {"radio 3", true, {}, {}, kWPS, {}, true, 3, three},
      {"radio 4", true, {}, {}, {}, kWPS, true, 4, three},
      {"radios 3 and 4", true, {}, {}, kWPS, kWPS, true, 3, three},
      {"radios 1 and 4", true, {}, kWPS, {}, kWPS, true, 1, three},
      {"everywhere", true, kWPS, kWPS, kWPS, kWPS, true, 1, three},
      {"other words",
       false,
       {},
       {{"ap_enable_wps", "YES"}, {"guest_ap_enable_wps", "yes"}},
       {{"ap_enable_wps", "yes "}},
       {},
       false,
       0,
       two},
      {"smart connect", true, kAllOfIt, {}, {}, {}, true, 0, {0, 0, 0}, true},
      {"smart connect undoes what the radios say", false, kSmart, kLoud, kLoud, {}, false, 0, two},
      {"no exact yes", false, kNotSmart, {}, {}, {}, false, 0, two},
      {"guests' smart connect", false, kGuestsSmart, {}, kWPS, {}, true, 2, two},
      {"unknown power, for all radios once",
       true,
       With(kSmart, "tx_power", "max"),
       {},
       {},
       {},
       false,
       0,
       {2, 2, 2},
       false,
       {NoPower("max")}},
      {"unknown powers, the radios' first",
       false,
       With(kSmart, "tx_power", "all"),
       {{"tx_power", "two"}},
       {{"tx_power", "five"}},
       {},
       false,
       0,
       {2, 2},
       false,
       {NoPower("two"), NoPower("five"), NoPower("all")}},
  };
  for (const Case& radio_case : cases) {
    SCOPED_TRACE(radio_case.name);
    LegacyHousehold device;
    if (radio_case.is_mesh) device.JoinMesh();
    device.WriteAccessPoint(LegacyHousehold::kAllBandsFile, radio_case.all_bands);
    device.WriteAccessPoint(LegacyHousehold::k24File, radio_case.first);
    device.WriteAccessPoint(LegacyHousehold::k5File, radio_case.second);
    device.WriteAccessPoint(LegacyHousehold::kSecondMeshFile, radio_case.third);

    Migrate(device);

    const Json::Value wps = device.Document("wps.json");
    EXPECT_EQ(wps["enabled"], radio_case.wps_enabled);
    EXPECT_EQ(wps["band"], radio_case.wps_band);
    EXPECT_EQ(wps["pin"], "12345670");
    std::vector<int> powers;
    for (const Json::Value& radio : device.Document("radio.json")) {
      powers.push_back(radio["txPower"].asInt());
      EXPECT_EQ(radio["allowDFSChannels"], radio_case.allows_dfs);
      EXPECT_EQ(radio["channel"], 0);
    }
    EXPECT_EQ(powers, radio_case.powers);
    LogLines lines = radio_case.lines;
    lines.insert(lines.begin(), Warning(229, "Start to migrate config from 1.2.5 to 1.3"));
    EXPECT_EQ(device.Log(), lines);
    const Json::Value networks = device.Document("network.json.default");
    const auto is_on = [&](const char* key) {
      return std::ranges::count(radio_case.all_bands, std::pair<std::string, std::string>(key, "yes")) > 0;
    };
    EXPECT_EQ(networks[0]["smartConnect"], is_on("smartconnect_enabled"));
    EXPECT_EQ(networks[1]["smartConnect"], is_on("smartconnect_guest_enabled"));
  }
}

TEST(Migrate125To13, SmartConnectLeavesTheRadiosOtherValuesAlone) {
  LegacyHousehold device;
  device.WriteAccessPoint(
      LegacyHousehold::kAllBandsFile,
      {{"smartconnect_enabled", "yes"}, {"channel", "9"}, {"bandwidth", "80_80MHZ"}, {"mode", "ac"}});
  device.WriteAccessPoint(LegacyHousehold::k24File, {{"channel", "6"}, {"mode", "bgn"}});
  Migrate(device);
  const Json::Value radio = device.Document("radio.json")[0];
  EXPECT_EQ(radio["channel"], 6);
  EXPECT_EQ(radio["bandwidth"], 0);
  EXPECT_EQ(radio["mode"], 1);
}

TEST(Migrate125To13, FileThatTwoRadiosShareIsArchivedOnce) {
  LegacyHousehold device;
  device.WriteKernelMAC(5, "001132000004");
  Migrate(device);
  EXPECT_EQ(device.Archived(),
            (Names{"lbd.conf", "lbd.guest.conf", "mf.info", "mf.setting", "mf_guest.info",
                   "wifi_ap_00:00:00:00:00:00", "wifi_ap_00:11:32:00:00:04", "wifi_nvram", "wifi_wps"}));
  EXPECT_TRUE(device.Files().Exists(LegacyHousehold::k5File));
}

TEST(Migrate125To13, FilterProfilesAreAssignedByEachNetworksPolicyAndTheListsStay) {
  LegacyHousehold device;
  const std::string allow_list = "/etc/hostapd/mac_filter/mf_allow.conf";
  device.Files().Write(allow_list, "[1]\nenable=yes\nmac=00:11:32:00:00:01\n");
  device.WriteEntries("/etc/hostapd/mac_filter/mf_guest.info", {{"policy", "allow"}});
  Migrate(device);
  const Json::Value networks = device.Document("network.json.default");
  for (const auto& [network, profile] : {std::pair{0, 0}, {1, 3}}) {
    EXPECT_EQ(networks[network]["mac_filter_profile_id"], profile);
    EXPECT_EQ(networks[network]["featureSettings"][1]["mac_filter_profile_id"], profile);
  }
  EXPECT_TRUE(device.Files().Exists(allow_list));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
