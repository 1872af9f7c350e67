// The migration of the 1.3-era global files: all of it or nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kModel = kWifi + "model.json";
const std::string kCountry = kWifi + "country.json";
const std::string kBackhaul = kWifi + "backhaul.json";
const std::string kRole = "/usr/kelp/etc/mesh/mesh_role.conf";
const std::string kGlobal = kWifi + "global.json";

class Failing13 : public ::testing::Test {
 protected:
  /// Runs, expects one failure, one log line and an untouched device. Gives the failure's text.
  std::string Fail(const lab::RunOptions& options = {}) {
    const lab::RunResult run = UpdateFrom(device_, "9000", options);
    const std::string what = ExpectFailure(run, "9000");
    EXPECT_EQ(run.log.size(), 1U);
    ExpectUntouched(run);
    return what;
  }

  /// Runs, expects success and gives the document.
  Json::Value Succeed() {
    const lab::RunResult run = UpdateFrom(device_, "9000");
    ExpectSuccess(run);
    EXPECT_TRUE(run.log.empty());
    ExpectedTree expected(run.before);
    expected.Written(kGlobal, run.after);
    expected.Removed(kModel);
    expected.Removed(kCountry);
    expected.ExpectEqual(run.after);
    return testing_support::ParseJson(device_.Read(kGlobal));
  }

  lab::PrivateRoot device_{Image("release-13-mesh")};
};

TEST_F(Failing13, EachMissingFile) {
  for (const std::string& path : {kModel, kCountry, kBackhaul}) {
    SCOPED_TRACE(path);
    const std::string text = device_.Read(path);
    device_.Remove(path);
    EXPECT_EQ(Fail(), "some old config files are not existed.");
    device_.Write(path, text);
  }
}

TEST_F(Failing13, DanglingLinkIsAMissingFile) {
  device_.Remove(kCountry);
  device_.Link(kCountry, "/nowhere");
  EXPECT_EQ(Fail(), "some old config files are not existed.");
}

// A link to itself cannot be tested, which would be another failure: the files behind the first missing one
// are not.
TEST_F(Failing13, FirstMissingFileEndsTheTest) {
  device_.Remove(kModel);
  device_.Remove(kCountry);
  device_.Link(kCountry, kCountry);
  EXPECT_EQ(Fail(), "some old config files are not existed.");
}

TEST_F(Failing13, CountryIsTestedBeforeTheBackhaul) {
  device_.Remove(kCountry);
  device_.Remove(kBackhaul);
  device_.Link(kBackhaul, kBackhaul);
  EXPECT_EQ(Fail(), "some old config files are not existed.");
}

TEST_F(Failing13, FileThatCannotBeTested) {
  for (const std::string& path : {kModel, kCountry, kBackhaul}) {
    const std::string text = device_.Read(path);
    device_.Remove(path);
    device_.Link(path, path);
    EXPECT_THAT(Fail(), AllOf(StartsWith("filesystem error"), HasSubstr(path)));
    device_.Remove(path);
    device_.Write(path, text);
  }
}

// Nothing is read before all three are known to be there.
TEST_F(Failing13, MissingBackhaulFileComesBeforeABadModelFile) {
  device_.Write(kModel, "no JSON");
  device_.Remove(kBackhaul);
  EXPECT_EQ(Fail(), "some old config files are not existed.");
}

TEST_F(Failing13, FilesAreReadInOrder) {
  device_.Write(kModel, "{\"connected_models\": [\"lotus\"]}");
  device_.Write(kCountry, "{\"country_code\": \"nl\"}");
  device_.Write(kBackhaul, "{}");
  EXPECT_EQ(
      Fail(),
      "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: lotus: runtime error");
  device_.Write(kModel, "{\"connected_models\": []}");
  EXPECT_EQ(Fail(), "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: nl: runtime error");
  device_.Write(kCountry, "{\"country_code\": \"NL\"}");
  EXPECT_NE(Fail(), "");
  device_.Write(kBackhaul, "{\"radio_frequencies\": []}");
  Succeed();
}

TEST_F(Failing13, NamesThatAreNoModels) {
  for (const std::string name :
       {"lotus", "Lotus", "LOTUS ", " LOTUS", "", "ERROR", "LOTU", "LOTUSS", "%s%n"}) {
    device_.Write(kModel, "{\"connected_models\": [\"ORCHID\", \"" + name + "\"]}");
    EXPECT_EQ(Fail(), "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: " + name +
                          ": runtime error");
  }
}

TEST_F(Failing13, NamesThatAreNoCountries) {
  for (const std::string name : {"nl", "", "NL ", " NL", "EU", "N", "NLD", "maxcountrycode", "%s%n"}) {
    device_.Write(kCountry, "{\"country_code\": \"" + name + "\"}");
    EXPECT_EQ(Fail(), "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: " + name +
                          ": runtime error");
  }
}

// What is no string goes by the text that it can be taken as.
TEST_F(Failing13, ElementsThatAreNoStrings) {
  for (const auto& [element, text] :
       {std::pair<std::string, std::string>{"7", "7"}, {"null", ""}, {"true", "true"}}) {
    device_.Write(kModel, "{\"connected_models\": [" + element + "]}");
    EXPECT_EQ(Fail(), "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: " + text +
                          ": runtime error");
  }
  for (const std::string element : {"[]", "{}", "[\"LOTUS\"]"}) {
    device_.Write(kModel, "{\"connected_models\": [" + element + "]}");
    EXPECT_NE(Fail(), "");
  }
}

TEST_F(Failing13, ModelOfTheDeviceIsNeededAgain) {
  SetInformation(device_, "kelpbios", "birch");
  EXPECT_EQ(Fail(), "Invalid kelpbios value: birch");
}

TEST_F(Failing13, FolderAtTheGlobalDocument) {
  device_.Write(kGlobal + "/kept", "by somebody");
  EXPECT_THAT(Fail(), HasSubstr(kGlobal));
}

TEST_F(Failing13, UnwritableWifiFolder) {
  device_.SetMode("/usr/kelp/etc/wifi", 0555);
  lab::RunOptions options;
  options.drop_file_privileges = true;
  EXPECT_THAT(Fail(options), HasSubstr(kGlobal));
}

TEST_F(Failing13, UnreadableFiles) {
  lab::RunOptions options;
  options.drop_file_privileges = true;
  for (const std::string& path : {kModel, kCountry, kBackhaul}) {
    device_.SetMode(path, 0000);
    EXPECT_THAT(Fail(options), HasSubstr(path));
    device_.SetMode(path, 0644);
  }
}

// The mesh role file alone may be missing, unreadable or no file at all.
TEST_F(Failing13, MeshRoleFileIsNoFailure) {
  device_.Remove(kRole);
  EXPECT_FALSE(Succeed()["meshInfo"]["isRepeater"].asBool());
}

TEST_F(Failing13, FolderInPlaceOfTheMeshRoleFile) {
  device_.Remove(kRole);
  device_.MakeDirectory(kRole);
  EXPECT_FALSE(Succeed()["meshInfo"]["isRepeater"].asBool());
}

TEST_F(Failing13, RoleIsComparedExactly) {
  for (const std::string role : {"RE", "re ", "router", ""}) {
    lab::PrivateRoot device(Image("release-13-mesh"));
    device.Write(kRole, "role=" + role + "\n");
    ExpectSuccess(UpdateFrom(device, "9000"));
    EXPECT_FALSE(testing_support::ParseJson(device.Read(kGlobal))["meshInfo"]["isRepeater"].asBool()) << role;
  }
}

TEST_F(Failing13, NoConnectedModels) {
  device_.Write(kModel, "{\"connected_models\": []}");
  EXPECT_EQ(Succeed()["meshInfo"]["connectedModels"], testing_support::ParseJson("[]"));
}

TEST_F(Failing13, ConnectedModelsAreASetInOrderOfValue) {
  device_.Write(kModel, "{\"connected_models\": [\"LOTUS\", \"ORCHID\", \"LOTUS\", \"Error\"]}");
  EXPECT_EQ(Succeed()["meshInfo"]["connectedModels"],
            testing_support::ParseJson("[\"Error\", \"ORCHID\", \"LOTUS\"]"));
}

TEST_F(Failing13, EndMarkerIsACountry) {
  device_.Write(kCountry, "{\"country_code\": \"MaxCountryCode\"}");
  EXPECT_EQ(Succeed()["countryCodeSetting"]["countryCode"].asString(), "MaxCountryCode");
}

TEST_F(Failing13, FirstOfTheTwoBackhaulBandsDecides) {
  const std::pair<const char*, bool> cases[] = {
      {R"(["Band5GHz_2", "Band5GHz_1"])", true},
      {R"(["Band5GHz_1", "Band5GHz_2"])", false},
      {R"(["Band2GHz", "Band5GHz_2"])", true},
      {R"(["band5ghz_2", "Band5GHz_2 "])", false},
      {R"([])", false},
      {R"([5, null, true, "Band5GHz_2"])", true},
      {R"(["Band5GHz_2", ["not read"]])", true},
  };
  for (const auto& [bands, swapped] : cases) {
    SCOPED_TRACE(bands);
    lab::PrivateRoot device(Image("release-13-mesh"));
    device.Write(kBackhaul, std::string("{\"radio_frequencies\": ") + bands + "}");
    ExpectSuccess(UpdateFrom(device, "9000"));
    EXPECT_EQ(testing_support::ParseJson(device.Read(kGlobal))["backhaulSwapped"].asBool(), swapped);
  }
}

TEST_F(Failing13, BandThatIsNoTextFailsBeforeADecidingOne) {
  device_.Write(kBackhaul, R"({"radio_frequencies": [["Band5GHz_1"], "Band5GHz_2"]})");
  EXPECT_NE(Fail(), "");
}

// Consumed files are links as well as files; what they lead to stays.
TEST_F(Failing13, LinkedFilesLoseTheirLinksOnly) {
  device_.Write("/tmp/model.json", device_.Read(kModel));
  device_.Remove(kModel);
  device_.Link(kModel, "/tmp/model.json");
  Succeed();
  EXPECT_TRUE(device_.Exists("/tmp/model.json"));
}

}  // namespace
}  // namespace end_to_end
