#include "lab/reports/household_json.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "lab/text/json.h"
#include "tests/lab/household/household.h"

namespace lab_test {
namespace {

Json::Value Report(Household& household) {
  const lab::RunResult run = household.Update();
  lab::Discretion discretion({}, run.before);
  return lab::ParseJson(lab::ToJson(lab::Tell("a device", "8000", run, discretion))).value();
}

const Json::Value& SettingOf(const Json::Value& part, const std::string& member) {
  for (const Json::Value& setting : part["settings"]) {
    if (setting["member"] == member) return setting;
  }
  return Json::Value::nullSingleton();
}

TEST(HouseholdJson, TellsWhatTheScreenTells) {
  Household household;
  household.Set(Household::k5, "security", "WPA2");
  const Json::Value json = Report(household);
  EXPECT_EQ(json["schema"], 1);
  EXPECT_EQ(json["outcome"], "migrated-with-fallbacks");
  EXPECT_EQ(json["status"], 0);
  ASSERT_EQ(json["networks"].size(), 2U);
  ASSERT_EQ(json["networks"][0]["radios"].size(), 3U);
  const Json::Value& radio = json["networks"][0]["radios"][2];
  EXPECT_EQ(radio["name"], "5 GHz");
  EXPECT_EQ(radio["file"], Household::k5);
  const Json::Value& security = SettingOf(radio, "security");
  EXPECT_EQ(security["key"], "security");
  EXPECT_EQ(security["was"], "WPA2");
  EXPECT_EQ(security["now"], 4);
  EXPECT_EQ(security["meaning"], "WPA2");
  EXPECT_EQ(security["title"], "Security");
  EXPECT_EQ(security["fellBack"], true);
  EXPECT_EQ(SettingOf(radio, "password")["now"], "********");
  EXPECT_EQ(SettingOf(json["networks"][1]["radios"][1], "guestPasswordRotation.date")["now"],
            "2023-07-04 09:05");
  EXPECT_EQ(SettingOf(json["radios"][1], "bandwidth")["meaning"], "20/40/80 MHz");
  ASSERT_EQ(json["findings"].size(), 1U);
  EXPECT_EQ(json["findings"][0]["id"], "security-unknown");
  EXPECT_EQ(json["findings"][0]["severity"], "breaks");
  EXPECT_EQ(json["findings"][0]["places"][0], "wifi_ap_02:11:32:00:00:05: security=WPA2");
  EXPECT_EQ(json["log"][1]["number"], 760);
  EXPECT_EQ(json["log"][1]["severity"], "err");
  EXPECT_EQ(json["macFilterProfiles"][0]["devices"][0]["name"], "Tablet");
  EXPECT_EQ(json["files"]["moved"].size(), 10U);
}

TEST(HouseholdJson, TellsForeignDocumentsInPlainValues) {
  const std::string wifi = "/usr/kelp/etc/wifi/";
  Household household;
  household.Update();
  const std::string deep = std::string(990, '[') + std::string(990, ']');
  household.Files().Write(wifi + "misc.json", R"({"netTopology": )" + deep +
                                                  R"(, "macFilterProfiles": [{"id": 0, "devices": "none"},
                                 {"id": 1, "name": {}, "devices": [5, {"name": {"refs": [0]}, "mac": [[]]}]}]})");
  household.Files().Write(wifi + "network.json.default",
                          R"([{"kind": {"refs": [0]}, "ssid": {"refs": [0]}, "featureSettings":
                              [{"ssid": [{"password": "swordfish"}], "max_num_client": {"refs": [1]}}]}])");
  const Json::Value json = Report(household);
  const Json::Value& settings = json["networks"][0]["radios"][1]["settings"];
  for (const Json::Value& setting : settings) {
    EXPECT_FALSE(setting["now"].isObject()) << setting["member"].asString();
  }
  EXPECT_EQ(SettingOf(json["networks"][0]["radios"][1], "ssid")["now"], R"([{"password":"********"}])");
  for (const Json::Value& setting : json["device"]) {
    EXPECT_TRUE(setting["member"] != "netTopology" || setting["now"].isString());
  }
  EXPECT_EQ(json["macFilterProfiles"][0]["devices"].size(), 0U);
  ASSERT_EQ(json["macFilterProfiles"][1]["devices"].size(), 1U);
  EXPECT_EQ(json["macFilterProfiles"][1]["devices"][0]["mac"], "");
  std::istringstream text(lab::IndentedJson(json));
  Json::Value read;
  EXPECT_NO_THROW(text >> read);
}

TEST(HouseholdJson, TellsEveryMemberOfTheNetworkAndRadioDocuments) {
  Household household;
  const Json::Value json = Report(household);
  // 30 of the network's own, the rotation being one, and its seven instead of it; without the radio's number.
  EXPECT_EQ(json["networks"][0]["radios"][0]["settings"].size(), 30U - 2U + 7U);
  EXPECT_EQ(json["radios"][0]["settings"].size(), 9U);
}

TEST(HouseholdJson, TakesTheInformationStoreForASourceInAWholeMigrationOnly) {
  lab::PrivateRoot device(std::filesystem::path(KELP_SOURCE "/devices/release-13-mesh"));
  const lab::RunResult run = lab::RunProgram(device, KELP_PROGRAM, {"--update-config", "9000"});
  const Json::Value json =
      lab::ParseJson(lab::ToJson(lab::Tell("a device", "9000", run, lab::Discretion({}, run.before))))
          .value();
  for (const Json::Value& setting : json["device"]) {
    if (setting["member"] == "countryCode") {
      EXPECT_EQ(setting["now"], "NL");
      EXPECT_TRUE(setting["was"].isNull());
    }
  }
  Household household;
  EXPECT_EQ(Report(household)["device"][3]["was"], "DE");
}

TEST(HouseholdJson, IsTextOfASCIIWhateverTheHouseholdWroteThere) {
  Household household;
  household.Set(Household::k24, "ssid", "k5T/G+mHjg==");
  household.Set(Household::k5, "schedule", "\x1b\xff\xe9\u202e");
  for (const char byte : lab::IndentedJson(Report(household))) {
    EXPECT_TRUE(byte == '\n' || (byte >= 0x20 && byte < 0x7F)) << static_cast<int>(byte);
  }
}

}  // namespace
}  // namespace lab_test
