#include "migration/migrate_125_to_13.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "tests/migration/legacy_household.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi::Updater {
namespace {

using std::filesystem::filesystem_error;
using testing_support::Entries;
using testing_support::Error;
using testing_support::LegacyHousehold;
using testing_support::LogLines;
using testing_support::ParseJson;
using testing_support::Warning;
using Names = std::vector<std::string>;

constexpr const char* kFolder = "/usr/kelp/etc/wifi";
constexpr const char* kGlobal = "/usr/kelp/etc/wifi/global.json";
constexpr const char* kMisc = "/usr/kelp/etc/wifi/misc.json";

const std::string kStartLine = Warning(229, "Start to migrate config from 1.2.5 to 1.3");
const std::string kSkipLine = Error(225, "New config is existed, so stop migrating.");

class Migrate125To13Test : public ::testing::Test {
 protected:
  void Migrate() {
    device_.Run([&] { Migrate125To13(device_.context); });
  }
  template <typename E>
  std::string MigrateThrowing() {
    return device_.RunThrowing<E>([&] { Migrate125To13(device_.context); });
  }
  lab::TreeDiff MigrateAndCompare() {
    const lab::Tree before = device_.Files().Snapshot();
    Migrate();
    lab::TreeDiff diff = lab::Diff(before, device_.Files().Snapshot());
    std::erase(diff.written, "/var/lock/fw_printenv.lock");
    return diff;
  }
  Names DocumentsWritten() {
    Names names;
    for (const char* name : {"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"}) {
      if (device_.HasDocument(name)) names.emplace_back(name);
    }
    return names;
  }
  Json::Value WPS() { return device_.Document("wps.json"); }

  LegacyHousehold device_;
};

// The whole

TEST_F(Migrate125To13Test, FiveDocumentsAreWrittenAndTheUsedFilesArchived) {
  const lab::TreeDiff diff = MigrateAndCompare();
  EXPECT_EQ(diff.written, (Names{"/usr/kelp/etc/wifi/global.json", "/usr/kelp/etc/wifi/legacy",
                                 "/usr/kelp/etc/wifi/misc.json", "/usr/kelp/etc/wifi/network.json.default",
                                 "/usr/kelp/etc/wifi/radio.json", "/usr/kelp/etc/wifi/wps.json"}));
  EXPECT_EQ(diff.changed, Names{});
  EXPECT_EQ(diff.removed, Names{});
  const std::vector<lab::TreeDiff::Move> moves{
      {"/etc/hostapd/mac_filter/mf.info", "/usr/kelp/etc/wifi/legacy/mf.info"},
      {"/etc/hostapd/mac_filter/mf.setting", "/usr/kelp/etc/wifi/legacy/mf.setting"},
      {"/etc/hostapd/mac_filter/mf_guest.info", "/usr/kelp/etc/wifi/legacy/mf_guest.info"},
      {"/usr/kelp/etc/wifi/lbd.conf", "/usr/kelp/etc/wifi/legacy/lbd.conf"},
      {"/usr/kelp/etc/wifi/lbd.guest.conf", "/usr/kelp/etc/wifi/legacy/lbd.guest.conf"},
      {"/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00", "/usr/kelp/etc/wifi/legacy/wifi_ap_00:00:00:00:00:00"},
      {"/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:04", "/usr/kelp/etc/wifi/legacy/wifi_ap_00:11:32:00:00:04"},
      {"/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:05", "/usr/kelp/etc/wifi/legacy/wifi_ap_00:11:32:00:00:05"},
      {"/usr/kelp/etc/wifi/wifi_nvram", "/usr/kelp/etc/wifi/legacy/wifi_nvram"},
      {"/usr/kelp/etc/wifi/wifi_wps", "/usr/kelp/etc/wifi/legacy/wifi_wps"}};
  EXPECT_EQ(diff.moved, moves);
  EXPECT_EQ(device_.Log(), LogLines{kStartLine});
}

TEST_F(Migrate125To13Test, DeviceListsAreReadAndStay) {
  device_.Files().Write("/etc/hostapd/mac_filter/mf_allow.conf", "[1]\nenable=yes\nmac=00:11:32:00:00:01\n");
  Migrate();
  EXPECT_TRUE(device_.Files().Exists("/etc/hostapd/mac_filter/mf_deny.conf"));
  EXPECT_TRUE(device_.Files().Exists("/etc/hostapd/mac_filter/mf_allow.conf"));
  EXPECT_EQ(device_.Document("misc.json")["macFilterProfiles"].size(), 2U);
}

TEST_F(Migrate125To13Test, DocumentsAreForNobodyElsesEyes) {
  Migrate();
  const lab::Tree tree = device_.Files().Snapshot();
  const auto documents = DocumentsWritten();
  EXPECT_EQ(documents.size(), 5U);
  for (const std::string& name : documents) {
    EXPECT_EQ(tree.at(std::string(kFolder) + "/" + name).mode, 0600U) << name;
  }
}

TEST_F(Migrate125To13Test, GlobalDocumentIsTheGlobalSettings) {
  device_.JoinMesh();
  Migrate();
  EXPECT_EQ(device_.Document("global.json"), ParseJson(R"({"logLevel": 2, "defaultModel": "ORCHID",
                          "meshInfo": {"connectedModels": ["LOTUS"], "isRepeater": false},
                          "countryCodeSetting": {"countryCode": "DE"}, "backhaulSwapped": false})"));
}

TEST_F(Migrate125To13Test, MiscDocumentIsOneObject) {
  Migrate();
  EXPECT_EQ(device_.Document("misc.json"), ParseJson(R"({"netTopology": "default",
                          "broadcastDetect": {"devices": [], "enabled": true, "threshold": 64},
                          "macFilterProfiles": [{"id": 0, "name": "Primary Network - Deny", "policy": 1,
                                                 "devices": [{"name": "TV", "mac": "00:11:32:aa:bb:cc"}]}]})"));
}

TEST_F(Migrate125To13Test, RadioDocumentIsAnArrayInListOrder) {
  device_.WriteAccessPoint(LegacyHousehold::k24File, {{"channel", "6"}, {"channel2", "10"}});
  device_.WriteAccessPoint(LegacyHousehold::k5File, {{"channel", "44"},
                                                     {"bandwidth", "20_40_80MHZ"},
                                                     {"mode", "an+ac"},
                                                     {"tx_power", "low"},
                                                     {"allow_dfs_channels", "yes"}});
  Migrate();
  EXPECT_EQ(
      device_.Document("radio.json"),
      ParseJson(R"([{"frequency": 1, "channel": 6, "channel2": 10, "bandwidth": 0, "mode": 0, "txPower": 1,
                           "allowDFSChannels": false, "usb3Enabled": true, "thirdFlag": false, "fourthFlag": true},
                          {"frequency": 2, "channel": 44, "channel2": 0, "bandwidth": 3, "mode": 5, "txPower": 0,
                           "allowDFSChannels": true, "usb3Enabled": true, "thirdFlag": false, "fourthFlag": true}])"));
}

/// One network on one radio of the household as it is laid out.
Json::Value Feature(int frequency, bool is_guest, const std::string& file) {
  Json::Value feature = ParseJson(R"({
      "enabled": false, "frequency": 0, "ssid": "", "display_ssid": false, "max_num_client": 256,
      "restrict_guest_access": false, "security": 5, "password": "", "auth_server_ip": "", "auth_server_port": 0,
      "schedule_enabled": false, "schedule_kind": 1, "schedule": "", "preset_number": 0, "preset_flag": false,
      "mac_filter_profile_id": 0,
      "guestPasswordRotation": {"enable": false, "date_type": 1, "strength": 1, "date": "2021-01-01 00:00",
                                "week_day": "0,1,2,3,4,5,6", "notify_enable": false, "mail_list": []},
      "pmf_mode": 1, "ampdu": false, "uapsd_enable": false, "ap_mumimo": false, "ap_enable_11r": false,
      "ap_mcast_translating": false, "country_abbrev_override_enable": false, "ap_isolation": false,
      "preset_on": true, "enable_ext_nss": false, "sc_disable_legacy_steering": false, "key_rotation": 3600,
      "dtim": 4})");
  feature["frequency"] = frequency;
  feature["password"] = "secret of " + file;
  if (is_guest) {
    feature["security"] = 1;
    feature["mac_filter_profile_id"] = -1;
    feature["guestPasswordRotation"]["strength"] = 0;
    feature["guestPasswordRotation"]["week_day"] = "";
  }
  return feature;
}

TEST_F(Migrate125To13Test, NetworkDocumentIsAnArrayOfThePrimaryAndTheGuestNetwork) {
  Migrate();
  Json::Value expected(Json::arrayValue);
  for (const bool is_guest : {false, true}) {
    Json::Value network = Feature(0, is_guest, LegacyHousehold::kAllBandsFile);
    network["number"] = is_guest ? 1 : 0;
    network["name"] = is_guest ? "Guest Network" : "Primary Network";
    network["kind"] = is_guest ? 1 : 0;
    network["smartConnect"] = false;
    network["featureSettings"].append(Feature(1, is_guest, LegacyHousehold::k24File));
    network["featureSettings"].append(Feature(2, is_guest, LegacyHousehold::k5File));
    expected.append(network);
  }
  EXPECT_EQ(device_.Document("network.json.default"), expected);
}

TEST_F(Migrate125To13Test, WPSDocumentIsOneObject) {
  Migrate();
  EXPECT_EQ(
      WPS(),
      ParseJson(R"({"enabled": false, "reserved": 0, "band": 0, "pin_enabled": true, "pin": "12345670"})"));
}

TEST_F(Migrate125To13Test, DualBandDeviceHasTwoRadiosEverywhere) {
  Migrate();
  EXPECT_EQ(device_.Document("radio.json").size(), 2U);
  for (const Json::Value& network : device_.Document("network.json.default")) {
    EXPECT_EQ(network["featureSettings"].size(), 2U);
  }
}

TEST_F(Migrate125To13Test, TriBandDeviceHasThreeRadiosEverywhere) {
  device_.JoinMesh();
  Migrate();
  const Json::Value radios = device_.Document("radio.json");
  ASSERT_EQ(radios.size(), 3U);
  EXPECT_EQ(radios[0]["frequency"], 1);
  EXPECT_EQ(radios[1]["frequency"], 3);
  EXPECT_EQ(radios[2]["frequency"], 4);
  for (const Json::Value& network : device_.Document("network.json.default")) {
    ASSERT_EQ(network["featureSettings"].size(), 3U);
    EXPECT_EQ(network["featureSettings"][0]["frequency"], 1);
    EXPECT_EQ(network["featureSettings"][1]["frequency"], 3);
    EXPECT_EQ(network["featureSettings"][2]["frequency"], 4);
  }
  EXPECT_EQ(device_.Archived(),
            (Names{"lbd.conf", "lbd.guest.conf", "mf.info", "mf.setting", "mf_guest.info",
                   "wifi_ap_00:00:00:00:00:00", "wifi_ap_00:11:32:00:00:04", "wifi_ap_00:11:32:00:00:05",
                   "wifi_ap_11:11:11:11:11:11", "wifi_nvram", "wifi_wps"}));
}

TEST_F(Migrate125To13Test, FileThatTwoRadiosShareIsArchivedOnce) {
  device_.WriteKernelMAC(5, "001132000004");
  Migrate();
  EXPECT_EQ(device_.Archived(),
            (Names{"lbd.conf", "lbd.guest.conf", "mf.info", "mf.setting", "mf_guest.info",
                   "wifi_ap_00:00:00:00:00:00", "wifi_ap_00:11:32:00:00:04", "wifi_nvram", "wifi_wps"}));
  EXPECT_TRUE(device_.Files().Exists(LegacyHousehold::k5File));
}

TEST_F(Migrate125To13Test, FilterProfilesAreAssignedByEachNetworksPolicy) {
  device_.Files().Write("/etc/hostapd/mac_filter/mf_allow.conf", "[1]\nenable=yes\nmac=00:11:32:00:00:01\n");
  device_.WriteEntries("/etc/hostapd/mac_filter/mf_guest.info", {{"policy", "allow"}});
  Migrate();
  const Json::Value networks = device_.Document("network.json.default");
  EXPECT_EQ(networks[0]["mac_filter_profile_id"], 0);
  EXPECT_EQ(networks[0]["featureSettings"][1]["mac_filter_profile_id"], 0);
  EXPECT_EQ(networks[1]["mac_filter_profile_id"], 3);
  EXPECT_EQ(networks[1]["featureSettings"][1]["mac_filter_profile_id"], 3);
}

// Topology

TEST_F(Migrate125To13Test, BridgeNamesItsNetworkDocument) {
  device_.WriteInfo({{"net_topology", "bridge"},
                     {"country_code", "DE"},
                     {"mesh_swap_backhaul_band", "no"},
                     {"wps_pin", "41730582"}});
  Migrate();
  EXPECT_TRUE(device_.HasDocument("network.json.bridge"));
  EXPECT_FALSE(device_.HasDocument("network.json.default"));
  EXPECT_EQ(device_.Document("misc.json")["netTopology"], "bridge");
}

TEST_F(Migrate125To13Test, RepeaterNamesItsNetworkDocumentWhateverTheStoreSays) {
  device_.JoinMesh();
  device_.context.meshRole = MeshRole::Repeater;
  Migrate();
  EXPECT_TRUE(device_.HasDocument("network.json.repeater"));
  EXPECT_FALSE(device_.HasDocument("network.json.default"));
  EXPECT_EQ(device_.Document("misc.json")["netTopology"], "repeater");
  EXPECT_EQ(device_.Log(), LogLines{kStartLine});
}

TEST_F(Migrate125To13Test, UnsupportedTopologyIsLoggedAndCountsAsDefault) {
  device_.WriteInfo({{"net_topology", "repeater"},
                     {"country_code", "DE"},
                     {"mesh_swap_backhaul_band", "no"},
                     {"wps_pin", "41730582"}});
  Migrate();
  EXPECT_TRUE(device_.HasDocument("network.json.default"));
  EXPECT_EQ(device_.Document("misc.json")["netTopology"], "default");
  EXPECT_EQ(device_.Log(),
            (LogLines{kStartLine,
                      Error(168, "Failed to get network context: unsupported net_topology: %srepeater")}));
}

// WPS

struct WPSCase {
  const char* name;
  std::vector<const char*> files;  // whose WPS is on
  bool enabled;
  int band;
};

void PrintTo(const WPSCase& wps_case, std::ostream* out) {
  *out << wps_case.name;
}

class WPSBandTest : public Migrate125To13Test, public ::testing::WithParamInterface<WPSCase> {};

TEST_P(WPSBandTest, FirstRadioInListOrderGivesTheBand) {
  device_.JoinMesh();
  for (const char* file : GetParam().files) device_.WriteAccessPoint(file, {{"ap_enable_wps", "yes"}});
  Migrate();
  EXPECT_EQ(WPS()["enabled"], GetParam().enabled);
  EXPECT_EQ(WPS()["band"], GetParam().band);
}

INSTANTIATE_TEST_SUITE_P(
    Migrate125To13, WPSBandTest,
    ::testing::Values(
        WPSCase{"None", {}, false, 0}, WPSCase{"AllBandsOnly", {LegacyHousehold::kAllBandsFile}, false, 0},
        WPSCase{"Radio1", {LegacyHousehold::k24File}, true, 1},
        WPSCase{"Radio3", {LegacyHousehold::k5File}, true, 3},
        WPSCase{"Radio4", {LegacyHousehold::kSecondMeshFile}, true, 4},
        WPSCase{"Radios3And4", {LegacyHousehold::k5File, LegacyHousehold::kSecondMeshFile}, true, 3},
        WPSCase{"Radios1And4", {LegacyHousehold::k24File, LegacyHousehold::kSecondMeshFile}, true, 1},
        WPSCase{"Everywhere",
                {LegacyHousehold::kAllBandsFile, LegacyHousehold::k24File, LegacyHousehold::k5File,
                 LegacyHousehold::kSecondMeshFile},
                true,
                1}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Migrate125To13Test, DualBandWPSBandMayBe2) {
  device_.WriteAccessPoint(LegacyHousehold::k5File, {{"ap_enable_wps", "yes"}});
  Migrate();
  EXPECT_EQ(WPS()["enabled"], true);
  EXPECT_EQ(WPS()["band"], 2);
}

TEST_F(Migrate125To13Test, OnlyTheExactWordYesEnablesWPS) {
  device_.WriteAccessPoint(LegacyHousehold::k24File,
                           {{"ap_enable_wps", "YES"}, {"guest_ap_enable_wps", "yes"}});
  device_.WriteAccessPoint(LegacyHousehold::k5File, {{"ap_enable_wps", "yes "}});
  Migrate();
  EXPECT_EQ(WPS()["enabled"], false);
  EXPECT_EQ(WPS()["band"], 0);
}

// Smart connect

TEST_F(Migrate125To13Test, SmartConnectLetsTheAllBandsFileDecide) {
  device_.JoinMesh();
  device_.WriteAccessPoint(LegacyHousehold::kAllBandsFile, {{"smartconnect_enabled", "yes"},
                                                            {"ap_enable_wps", "yes"},
                                                            {"allow_dfs_channels", "yes"},
                                                            {"tx_power", "low"}});
  Migrate();
  EXPECT_EQ(WPS()["enabled"], true);
  EXPECT_EQ(WPS()["band"], 0);
  const Json::Value radios = device_.Document("radio.json");
  ASSERT_EQ(radios.size(), 3U);
  for (const Json::Value& radio : radios) {
    EXPECT_EQ(radio["allowDFSChannels"], true);
    EXPECT_EQ(radio["txPower"], 0);
  }
  EXPECT_EQ(device_.Document("network.json.default")[0]["smartConnect"], true);
  EXPECT_EQ(device_.Document("network.json.default")[1]["smartConnect"], false);
}

TEST_F(Migrate125To13Test, SmartConnectUndoesWhatTheRadiosSay) {
  device_.WriteAccessPoint(LegacyHousehold::kAllBandsFile, {{"smartconnect_enabled", "yes"}});
  for (const char* file : {LegacyHousehold::k24File, LegacyHousehold::k5File}) {
    device_.WriteAccessPoint(file,
                             {{"ap_enable_wps", "yes"}, {"allow_dfs_channels", "yes"}, {"tx_power", "high"}});
  }
  Migrate();
  EXPECT_EQ(WPS()["enabled"], false);
  EXPECT_EQ(WPS()["band"], 0);
  EXPECT_EQ(WPS()["pin"], "12345670");
  for (const Json::Value& radio : device_.Document("radio.json")) {
    EXPECT_EQ(radio["allowDFSChannels"], false);
    EXPECT_EQ(radio["txPower"], 1);
  }
}

TEST_F(Migrate125To13Test, SmartConnectLeavesTheRadiosOtherValuesAlone) {
  device_.WriteAccessPoint(
      LegacyHousehold::kAllBandsFile,
      {{"smartconnect_enabled", "yes"}, {"channel", "9"}, {"bandwidth", "80_80MHZ"}, {"mode", "ac"}});
  device_.WriteAccessPoint(LegacyHousehold::k24File, {{"channel", "6"}, {"mode", "bgn"}});
  Migrate();
  EXPECT_EQ(
      device_.Document("radio.json")[0],
      ParseJson(R"({"frequency": 1, "channel": 6, "channel2": 0, "bandwidth": 0, "mode": 1, "txPower": 1,
                          "allowDFSChannels": false, "usb3Enabled": true, "thirdFlag": false, "fourthFlag": true})"));
}

TEST_F(Migrate125To13Test, SmartConnectTranslatesItsTransmitPowerOnce) {
  device_.JoinMesh();
  device_.WriteAccessPoint(LegacyHousehold::kAllBandsFile,
                           {{"smartconnect_enabled", "yes"}, {"tx_power", "max"}});
  Migrate();
  for (const Json::Value& radio : device_.Document("radio.json")) EXPECT_EQ(radio["txPower"], 2);
  EXPECT_EQ(device_.Log(), (LogLines{kStartLine, Error(811, "Invalid tx power: max, select high.")}));
}

TEST_F(Migrate125To13Test, SmartConnectComesBehindTheRadiosLines) {
  device_.WriteAccessPoint(LegacyHousehold::kAllBandsFile,
                           {{"smartconnect_enabled", "yes"}, {"tx_power", "all"}});
  device_.WriteAccessPoint(LegacyHousehold::k24File, {{"tx_power", "two"}});
  device_.WriteAccessPoint(LegacyHousehold::k5File, {{"tx_power", "five"}});
  Migrate();
  EXPECT_EQ(device_.Log(), (LogLines{kStartLine, Error(811, "Invalid tx power: two, select high."),
                                     Error(811, "Invalid tx power: five, select high."),
                                     Error(811, "Invalid tx power: all, select high.")}));
}

TEST_F(Migrate125To13Test, OnlyTheExactWordYesLetsTheAllBandsFileDecide) {
  device_.WriteAccessPoint(LegacyHousehold::kAllBandsFile, {{"smartconnect_enabled", "YES"},
                                                            {"ap_enable_wps", "YES"},
                                                            {"allow_dfs_channels", "yes"},
                                                            {"tx_power", "low"}});
  Migrate();
  EXPECT_EQ(WPS()["enabled"], false);
  for (const Json::Value& radio : device_.Document("radio.json")) {
    EXPECT_EQ(radio["allowDFSChannels"], false);
    EXPECT_EQ(radio["txPower"], 1);
  }
}

TEST_F(Migrate125To13Test, SmartConnectOfTheGuestNetworkDecidesNothing) {
  device_.WriteAccessPoint(LegacyHousehold::kAllBandsFile, {{"smartconnect_guest_enabled", "yes"},
                                                            {"ap_enable_wps", "yes"},
                                                            {"allow_dfs_channels", "yes"},
                                                            {"tx_power", "low"}});
  device_.WriteAccessPoint(LegacyHousehold::k5File, {{"ap_enable_wps", "yes"}});
  Migrate();
  EXPECT_EQ(WPS()["band"], 2);
  for (const Json::Value& radio : device_.Document("radio.json")) {
    EXPECT_EQ(radio["allowDFSChannels"], false);
    EXPECT_EQ(radio["txPower"], 1);
  }
  EXPECT_EQ(device_.Document("network.json.default")[0]["smartConnect"], false);
  EXPECT_EQ(device_.Document("network.json.default")[1]["smartConnect"], true);
}

// The skip rule

class SkipRuleTest : public Migrate125To13Test {
 protected:
  void ExpectSkipped() {
    const lab::Tree before = device_.Files().Snapshot();
    Migrate();
    EXPECT_EQ(device_.Log(), LogLines{kSkipLine});
    EXPECT_EQ(device_.Files().Snapshot(), before);
  }
};

TEST_F(SkipRuleTest, GlobalDocumentSkips) {
  device_.Files().Write(kGlobal, "{}");
  ExpectSkipped();
}

TEST_F(SkipRuleTest, EmptyGlobalDocumentSkips) {
  device_.Files().Write(kGlobal, "");
  ExpectSkipped();
}

TEST_F(SkipRuleTest, MiscDocumentAloneSkips) {
  device_.Files().Write(kMisc, "{}");
  ExpectSkipped();
}

TEST_F(SkipRuleTest, BothSkipWithOneLine) {
  device_.Files().Write(kGlobal, "{}");
  device_.Files().Write(kMisc, "{}");
  ExpectSkipped();
}

TEST_F(SkipRuleTest, AnyKindOfEntrySkips) {
  for (const char* path : {kGlobal, kMisc}) {
    device_.Files().MakeDirectory(path);
    ExpectSkipped();
    device_.Files().Remove(path);
    device_.Files().MakeFifo(path);
    ExpectSkipped();
    device_.Files().Remove(path);
    device_.Files().Link(path, "/etc");
    ExpectSkipped();
    device_.Files().Remove(path);
  }
}

TEST_F(SkipRuleTest, DanglingLinkIsAbsent) {
  device_.Files().Link(kGlobal, "/no/where");
  device_.Files().Link(kMisc, "/no/where");
  Migrate();
  EXPECT_EQ(device_.Log(), LogLines{kStartLine});
  EXPECT_EQ(device_.Document("global.json")["logLevel"], 2);
  EXPECT_EQ(device_.Document("misc.json")["netTopology"], "default");
}

TEST_F(SkipRuleTest, OtherDocumentsDoNotSkipAndAreReplaced) {
  for (const char* name : {"radio.json", "wps.json", "network.json.default", "network.json.bridge"}) {
    device_.Files().Write(std::string(kFolder) + "/" + name, "old");
  }
  device_.Files().MakeDirectory("/usr/kelp/etc/wifi/legacy");
  Migrate();
  EXPECT_EQ(device_.Log(), LogLines{kStartLine});
  EXPECT_EQ(device_.Document("radio.json").size(), 2U);
  EXPECT_EQ(device_.Document("wps.json").size(), 5U);
  EXPECT_EQ(device_.Document("network.json.default").size(), 2U);
  EXPECT_EQ(device_.Files().Read("/usr/kelp/etc/wifi/network.json.bridge"), "old");
}

TEST_F(SkipRuleTest, GlobalDocumentThatCannotBeTestedFails) {
  device_.Files().Link(kGlobal, kGlobal);
  const lab::Tree before = device_.Files().Snapshot();
  EXPECT_NE(MigrateThrowing<filesystem_error>(), "nothing thrown");
  EXPECT_EQ(device_.Log(), LogLines{});
  EXPECT_EQ(device_.Files().Snapshot(), before);
}

TEST_F(SkipRuleTest, MiscDocumentThatCannotBeTestedFails) {
  device_.Files().Link(kMisc, kMisc);
  const lab::Tree before = device_.Files().Snapshot();
  EXPECT_NE(MigrateThrowing<filesystem_error>(), "nothing thrown");
  EXPECT_EQ(device_.Log(), LogLines{});
  EXPECT_EQ(device_.Files().Snapshot(), before);
}

TEST_F(SkipRuleTest, MiscDocumentIsNotTestedWhereTheGlobalOneExists) {
  device_.Files().Write(kGlobal, "{}");
  device_.Files().Link(kMisc, kMisc);
  ExpectSkipped();
}

TEST_F(SkipRuleTest, GlobalDocumentIsTestedBeforeTheMiscOne) {
  device_.Files().Link(kGlobal, kGlobal);
  device_.Files().Write(kMisc, "{}");
  EXPECT_NE(MigrateThrowing<filesystem_error>(), "nothing thrown");
}

TEST_F(SkipRuleTest, DriverItselfSkipsNothing) {
  device_.Files().Write(kGlobal, "old");
  device_.Files().Write(kMisc, "old");
  device_.Run([&] { MigrateLegacyWifiConfig(device_.context); });
  EXPECT_EQ(device_.Log(), LogLines{});
  EXPECT_EQ(device_.Files().Read(kGlobal), "old");
  EXPECT_EQ(device_.Document("misc.json")["netTopology"], "default");
  EXPECT_EQ(device_.Archived().size(), 10U);
}

TEST_F(SkipRuleTest, SecondRunDoesNothing) {
  Migrate();
  ExpectSkipped();
}

// Failures

TEST_F(Migrate125To13Test, GlobalDocumentThatCannotBeWrittenStopsBeforeTheDriver) {
  device_.Files().MakeDirectory("/usr/kelp/etc/wifi/global.json.new");
  EXPECT_NE(MigrateThrowing<std::system_error>(), "nothing thrown");
  EXPECT_EQ(DocumentsWritten(), Names{});
  EXPECT_EQ(device_.Archived(), Names{});
  EXPECT_EQ(device_.Log(), LogLines{kStartLine});
}

TEST_F(Migrate125To13Test, EachDocumentThatCannotBeWrittenStopsBehindThoseBeforeIt) {
  const Names documents{"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"};
  for (std::size_t failing = 1; failing < documents.size(); ++failing) {
    LegacyHousehold device;
    device.Files().MakeDirectory("/usr/kelp/etc/wifi/" + documents[failing] + ".new");
    EXPECT_NE(device.RunThrowing<std::system_error>([&] { Migrate125To13(device.context); }),
              "nothing thrown");
    for (std::size_t place = 0; place < documents.size(); ++place) {
      EXPECT_EQ(device.HasDocument(documents[place]), place < failing)
          << documents[failing] << ", " << documents[place];
    }
    EXPECT_EQ(device.Archived(), Names{}) << documents[failing];
    EXPECT_TRUE(device.Files().Exists("/etc/hostapd/mac_filter/mf.info"));
  }
}

TEST_F(Migrate125To13Test, FailedRunIsSkippedByTheNext) {
  device_.Files().Remove("/proc/sys/kernel/kelp_mac_address5");
  EXPECT_EQ(MigrateThrowing<std::runtime_error>(), "Failed to get bssid from kelp_mac_address");
  EXPECT_EQ(DocumentsWritten(), Names{"global.json"});
  EXPECT_EQ(device_.Archived(), Names{});

  device_.WriteKernelMAC(5, "001132000005");
  const lab::Tree before = device_.Files().Snapshot();
  Migrate();
  EXPECT_EQ(device_.Log(), LogLines{kSkipLine});
  EXPECT_EQ(device_.Files().Snapshot(), before);
}

TEST_F(Migrate125To13Test, MissingDefaultPinStopsTheDriverEvenWhenTheFileHasAPin) {
  device_.WriteInfo({{"net_topology", "router"}, {"country_code", "DE"}, {"mesh_swap_backhaul_band", "no"}});
  EXPECT_NE(MigrateThrowing<std::runtime_error>(), "nothing thrown");
  EXPECT_EQ(DocumentsWritten(), Names{"global.json"});
  EXPECT_EQ(device_.Archived(), Names{});
}

TEST_F(Migrate125To13Test, MissingFileStopsTheArchiveBehindThoseBeforeIt) {
  device_.Files().Remove("/usr/kelp/etc/wifi/lbd.guest.conf");
  EXPECT_NE(MigrateThrowing<filesystem_error>().find("lbd.guest.conf"), std::string::npos);
  EXPECT_EQ(DocumentsWritten(),
            (Names{"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"}));
  EXPECT_EQ(device_.Archived(), (Names{"lbd.conf", "mf.info", "mf.setting", "mf_guest.info"}));
  for (const char* file : {LegacyHousehold::kAllBandsFile, LegacyHousehold::k24File, LegacyHousehold::k5File,
                           "/usr/kelp/etc/wifi/wifi_nvram", "/usr/kelp/etc/wifi/wifi_wps"}) {
    EXPECT_TRUE(device_.Files().Exists(file)) << file;
  }
}

TEST_F(Migrate125To13Test, EachMissingFileStopsTheArchiveThere) {
  const Names in_order{"/etc/hostapd/mac_filter/mf.info",
                       "/etc/hostapd/mac_filter/mf.setting",
                       "/etc/hostapd/mac_filter/mf_guest.info",
                       "/usr/kelp/etc/wifi/lbd.conf",
                       "/usr/kelp/etc/wifi/lbd.guest.conf",
                       "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00",
                       "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:04",
                       "/usr/kelp/etc/wifi/wifi_ap_00:11:32:00:00:05",
                       "/usr/kelp/etc/wifi/wifi_nvram",
                       "/usr/kelp/etc/wifi/wifi_wps"};
  for (std::size_t missing = 0; missing < in_order.size(); ++missing) {
    LegacyHousehold device;
    device.Files().Remove(in_order[missing]);
    EXPECT_NE(
        device.RunThrowing<filesystem_error>([&] { Migrate125To13(device.context); }).find(in_order[missing]),
        std::string::npos);
    EXPECT_TRUE(device.HasDocument("network.json.default"));
    EXPECT_EQ(device.Archived().size(), missing);
    for (std::size_t place = 0; place < in_order.size(); ++place) {
      EXPECT_EQ(device.Files().Exists(in_order[place]), place > missing)
          << in_order[missing] << in_order[place];
    }
  }
}

TEST_F(Migrate125To13Test, FileOfAnEarlierArchiveIsReplaced) {
  device_.Files().Write("/usr/kelp/etc/wifi/legacy/wifi_nvram", "earlier");
  Migrate();
  EXPECT_EQ(device_.Files().Read("/usr/kelp/etc/wifi/legacy/wifi_nvram"), "the old wifi_nvram");
}

TEST_F(Migrate125To13Test, FileInTheArchivesPlaceFailsBehindTheDocuments) {
  device_.Files().Write("/usr/kelp/etc/wifi/legacy", "no folder");
  EXPECT_NE(MigrateThrowing<filesystem_error>(), "nothing thrown");
  EXPECT_EQ(DocumentsWritten().size(), 5U);
  EXPECT_TRUE(device_.Files().Exists("/etc/hostapd/mac_filter/mf.info"));
}

TEST_F(Migrate125To13Test, MissingFolderFailsAtTheGlobalDocument) {
  device_.Files().Remove(kFolder);
  EXPECT_NE(MigrateThrowing<std::system_error>(), "nothing thrown");
  EXPECT_FALSE(device_.Files().Exists(kFolder));
  EXPECT_EQ(device_.Log(), LogLines{kStartLine});
}

// The order of the lines

TEST_F(Migrate125To13Test, LinesComeInTheOrderInWhichThingsAreRead) {
  device_.WriteInfo({{"country_code", "xx"},
                     {"mesh_swap_backhaul_band", "no"},
                     {"net_topology", "tree"},
                     {"wps_pin", "41730582"}});
  device_.Files().Remove("/etc/fw_env.config");
  device_.Files().MakeDirectory("/etc/hostapd/mac_filter/mf_allow.conf");
  const auto write = [&](const char* file, const std::string& mark) {
    device_.WriteEntries(file, {{"security", "s" + mark},
                                {"ssid", "n!" + mark},
                                {"password", "p" + mark},
                                {"pmf_mode", "m" + mark},
                                {"guest_security", "gs" + mark},
                                {"guest_ssid", "gn!" + mark},
                                {"guest_password", "gp" + mark},
                                {"guest_pwd_rotate_date_type", "d" + mark},
                                {"guest_pwd_rotate_strength", "t" + mark},
                                {"smartconnect_enabled", "yes"},
                                {"bandwidth", "b" + mark},
                                {"mode", "w" + mark},
                                {"tx_power", "x" + mark}});
  };
  write(LegacyHousehold::kAllBandsFile, "0");
  write(LegacyHousehold::k24File, "1");
  write(LegacyHousehold::k5File, "2");
  Migrate();

  LogLines expected{
      kStartLine,
      Error(280,
            "Failed to country code, use US to instead. error: Failed to convert string to enum class "
            "[N4KELP4Wifi11CountryCodeE]: xx: runtime error"),
      Error(168, "Failed to get network context: unsupported net_topology: %stree"),
      Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_allow.conf")};
  for (const std::string prefix : {"", "g"}) {
    for (const std::string mark : {"0", "1", "2"}) {
      expected.push_back(Error(760, "Invalid security mode: " + prefix + "s" + mark + ", select wpa2."));
      expected.push_back(Error(575, "Failed to decode base64 string: " + prefix + "n!" + mark));
      expected.push_back(Error(589, "Failed to decrypt ssid with " + prefix + "p" + mark));
      expected.push_back(Error(776, "Invalid pmf mode: m" + mark + ", select disabled."));
      if (prefix.empty()) continue;
      expected.push_back(Error(855, "Invalid mode: d" + mark + ", select regular."));
      expected.push_back(Error(869, "Invalid value: t" + mark + ", select medium."));
    }
  }
  for (const std::string mark : {"1", "2"}) {
    expected.push_back(Error(838, "Invalid bandwidth: b" + mark + ", select 20_40."));
    expected.push_back(Error(795, "Invalid wireless mode: w" + mark + "."));
    expected.push_back(Error(811, "Invalid tx power: x" + mark + ", select high."));
    expected.push_back(Error(896, "Failed to call KELPUSBGetUSB3DisableUbootEnv"));
  }
  expected.push_back(Error(811, "Invalid tx power: x0, select high."));
  EXPECT_EQ(device_.Log(), expected);
}

}  // namespace
}  // namespace KELP::Wifi::Updater
