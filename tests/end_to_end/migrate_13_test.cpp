// The migration of the 1.3-era global files: all of it or nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/edits.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing_support::ParseJson;

constexpr const char* kDevice = "release-13-mesh";
constexpr const char* kMissing = "some old config files are not existed.";
const std::string kModel = kWifi + "model.json";
const std::string kCountry = kWifi + "country.json";
const std::string kBackhaul = kWifi + "backhaul.json";
const std::string kRole = "/usr/kelp/etc/mesh/mesh_role.conf";
const std::string kGlobal = kWifi + "global.json";

Edit Models(const std::string& names) {
  return File(kModel, "{\"connected_models\": " + names + "}");
}
Edit Country(const std::string& code) {
  return File(kCountry, "{\"country_code\": \"" + code + "\"}");
}
Edit Bands(const std::string& names) {
  return File(kBackhaul, "{\"radio_frequencies\": " + names + "}");
}
std::string NoModel(const std::string& name) {
  return "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: " + name +
         ": runtime error";
}
std::string NoCountry(const std::string& name) {
  return "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: " + name + ": runtime error";
}

/// Runs, expects one failure, one log line and an untouched device. Gives the failure's text.
std::string Fail(const Edits& edits, const lab::RunOptions& options = {}) {
  lab::PrivateRoot device = Edited(kDevice, edits);
  const lab::RunResult run = UpdateFrom(device, "9000", options);
  const std::string what = ExpectFailure(run, "9000");
  EXPECT_EQ(run.log.size(), 1U);
  ExpectUntouched(run);
  return what;
}

/// Runs, expects success without a line, and no change but the document, which it gives, and the two files
/// that went.
Json::Value Succeed(const Edits& edits) {
  lab::PrivateRoot device = Edited(kDevice, edits);
  const lab::RunResult run = UpdateFrom(device, "9000");
  ExpectSuccess(run);
  EXPECT_TRUE(run.log.empty());
  ExpectedTree expected(run.before);
  expected.Written(kGlobal, run.after);
  expected.Removed(kModel);
  expected.Removed(kCountry);
  expected.ExpectEqual(run.after);
  return ParseJson(device.Read(kGlobal));
}

TEST(Migrate13, EachOfThreeFilesIsRequired) {
  for (const std::string& path : {kModel, kCountry, kBackhaul}) {
    EXPECT_EQ(Fail({Gone(path)}), kMissing) << path;
    EXPECT_EQ(Fail({Link(path, "/nowhere")}), kMissing) << path;
    EXPECT_THAT(Fail({Loop(path)}), AllOf(StartsWith("filesystem error"), HasSubstr(path)));
  }
}

// A link to itself cannot be tested, which would be another failure, and neither would be read.
TEST(Migrate13, FirstMissingFileEndsTheTest) {
  EXPECT_EQ(Fail({Gone(kModel), Loop(kCountry)}), kMissing);
  EXPECT_EQ(Fail({Gone(kCountry), Loop(kBackhaul)}), kMissing);
  EXPECT_EQ(Fail({File(kModel, "no JSON"), File(kCountry, "no JSON"), Gone(kBackhaul)}), kMissing);
}

TEST(Migrate13, FilesAreReadInOrder) {
  EXPECT_EQ(Fail({Models("[\"lotus\"]"), Country("nl"), File(kBackhaul, "{}")}), NoModel("lotus"));
  EXPECT_EQ(Fail({Models("[]"), Country("nl"), File(kBackhaul, "{}")}), NoCountry("nl"));
  EXPECT_THAT(Fail({Models("[]"), Country("NL"), File(kBackhaul, "{}")}), HasSubstr("radio_frequencies"));
}

TEST(Migrate13, NamesThatAreNoModels) {
  for (const std::string name :
       {"lotus", "Lotus", "LOTUS ", " LOTUS", "", "ERROR", "LOTU", "LOTUSS", "WILLOW", "%s%n"}) {
    EXPECT_EQ(Fail({Models("[\"ORCHID\", \"" + name + "\", \"ELM\"]")}), NoModel(name));
  }
}

TEST(Migrate13, NamesThatAreNoCountries) {
  for (const std::string name : {"nl", "", "NL ", " NL", "EU", "N", "NLD", "181", "maxcountrycode", "%s%n"}) {
    EXPECT_EQ(Fail({Country(name)}), NoCountry(name));
  }
}

// What is no string goes by the text that it can be taken as.
TEST(Migrate13, ElementsThatAreNoStrings) {
  const std::pair<const char*, const char*> cases[] = {
      {"7", "7"}, {"-1", "-1"}, {"null", ""}, {"true", "true"}};
  for (const auto& [element, text] : cases) {
    EXPECT_EQ(Fail({Models(std::string("[") + element + "]")}), NoModel(text));
  }
  for (const std::string element : {"[]", "{}", "[\"LOTUS\"]", "{\"name\": \"LOTUS\"}"}) {
    EXPECT_NE(Fail({Models("[" + element + "]")}), "") << element;
    EXPECT_NE(Fail({Bands("[" + element + ", \"Band5GHz_2\"]")}), "") << element;
  }
}

TEST(Migrate13, ModelOfTheDeviceIsNeededAgain) {
  EXPECT_EQ(Fail({Fact("kelpbios", "birch")}), "Invalid kelpbios value: birch");
}

TEST(Migrate13, FolderAtTheGlobalDocument) {
  EXPECT_THAT(Fail({File(kGlobal + "/kept", "by somebody")}), HasSubstr(kGlobal));
}

TEST(Migrate13, WhatMayNotBeReadOrWritten) {
  lab::RunOptions options;
  options.drop_file_privileges = true;
  EXPECT_THAT(Fail({Mode("/usr/kelp/etc/wifi", 0555)}, options), HasSubstr(kGlobal));
  for (const std::string& path : {kModel, kCountry, kBackhaul}) {
    EXPECT_THAT(Fail({Mode(path, 0000)}, options), HasSubstr(path));
  }
}

// The mesh role file alone may be missing, unreadable or no file at all. The information store is not asked.
TEST(Migrate13, OnlyTheExactRoleIsARepeater) {
  for (const char* text : {"role=RE\n", "role=re \n", "role= re\n", "role=router\n", "role=repeater\n",
                           "role=\n", "Role=re\n", "guest_role=re\n", ""}) {
    EXPECT_EQ(Succeed({File(kRole, text)})["meshInfo"]["isRepeater"], false) << text;
  }
  EXPECT_EQ(Succeed({File(kRole, "role=re\n")})["meshInfo"]["isRepeater"], true);
  EXPECT_EQ(Succeed({Folder(kRole)})["meshInfo"]["isRepeater"], false);
  EXPECT_EQ(Succeed({Gone(kRole), Fact("mesh_network_role", "re")})["meshInfo"]["isRepeater"], false);
}

TEST(Migrate13, ConnectedModelsAreASetInOrderOfValue) {
  const std::pair<const char*, const char*> cases[] = {
      {"[]", "[]"},
      {R"(["LOTUS", "ORCHID", "LOTUS", "Error"])", R"(["Error", "ORCHID", "LOTUS"])"},
      {R"(["CEDAR", "MAPLE", "LOTUS", "ORCHID"])", R"(["ORCHID", "LOTUS", "MAPLE", "CEDAR"])"}};
  for (const auto& [names, models] : cases) {
    EXPECT_EQ(Succeed({Models(names)})["meshInfo"]["connectedModels"], ParseJson(models));
  }
}

TEST(Migrate13, CountryIsTheFilesAndTheEndMarkerIsOne) {
  for (const char* code : {"MaxCountryCode", "ZW"}) {
    const Json::Value document = Succeed({Country(code), Fact("country_code", "FR")});
    EXPECT_EQ(document["countryCodeSetting"]["countryCode"], code);
  }
}

TEST(Migrate13, FirstOfTheTwoBackhaulBandsDecides) {
  const std::pair<const char*, bool> cases[] = {
      {R"(["Band5GHz_2", "Band5GHz_1"])", true},
      {R"(["Band5GHz_1", "Band5GHz_2"])", false},
      {R"(["Band2_4GHz", "Band5GHz", "band5ghz_1", "Band5GHz_1 ", "", "Band5GHz_2", "Band5GHz_1"])", true},
      {R"(["band5ghz_2", "Band5GHz_2 ", "Band5GHz_3"])", false},
      {R"([])", false},
      {R"([5, -4, null, true, 1.5, "Band5GHz_2"])", true},
      {R"(["Band5GHz_2", ["not read"]])", true},
      {R"(["Band5GHz_1", {}])", false},
  };
  for (const auto& [bands, swapped] : cases) {
    const Json::Value document =
        Succeed({Bands(bands), Fact("mesh_swap_backhaul_band", swapped ? "no" : "yes")});
    EXPECT_EQ(document["backhaulSwapped"], swapped) << bands;
  }
}

// Consumed files are links as well as files; what they lead to stays.
TEST(Migrate13, LinkedFilesLoseTheirLinksOnly) {
  lab::PrivateRoot device = Edited(kDevice, {File("/tmp/model.json", R"({"connected_models": ["CEDAR"]})"),
                                             Link(kModel, "/tmp/model.json")});
  ExpectSuccess(UpdateFrom(device, "9000"));
  EXPECT_EQ(ParseJson(device.Read(kGlobal))["meshInfo"]["connectedModels"], ParseJson(R"(["CEDAR"])"));
  EXPECT_FALSE(device.Exists(kModel));
  EXPECT_TRUE(device.Exists("/tmp/model.json"));
}

}  // namespace
}  // namespace end_to_end
