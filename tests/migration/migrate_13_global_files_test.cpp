#include "migration/migrate_13_global_files.h"

#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <stdexcept>

#include "platform/exceptions.h"
#include "tests/support/json_text.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::LogLines;
using testing_support::ParseJson;

constexpr const char* kDocument = "/usr/kelp/etc/wifi/global.json";
constexpr const char* kModelFile = "/usr/kelp/etc/wifi/model.json";
constexpr const char* kCountryFile = "/usr/kelp/etc/wifi/country.json";
constexpr const char* kBackhaulFile = "/usr/kelp/etc/wifi/backhaul.json";
constexpr const char* kRoleFile = "/usr/kelp/etc/mesh/mesh_role.conf";

constexpr const char* kMissing = "some old config files are not existed.";

class Migrate13GlobalFilesTest : public ::testing::Test {
 protected:
  Migrate13GlobalFilesTest() {
    device_.WriteInfo({{"kelpbios", "lotus"}});
    Write(kModelFile, R"({"connected_models": ["ORCHID"]})");
    Write(kCountryFile, R"({"country_code": "DE"})");
    Write(kBackhaulFile, R"({"radio_frequencies": ["Band5GHz_2"]})");
    Write(kRoleFile, "role=re\n");
  }

  void Write(const std::string& path, const std::string& text) { device_.Files().Write(path, text); }

  Json::Value Migrate(const UpdateContext& context = {}) {
    device_.Run([&] { Migrate13GlobalFiles(context); });
    return ParseJson(device_.Files().Read(kDocument));
  }
  Json::Value ModelsOf(const std::string& models) {
    Write(kModelFile, R"({"connected_models": )" + models + "}");
    Write(kCountryFile, R"({"country_code": "DE"})");
    return Migrate()["meshInfo"]["connectedModels"];
  }
  Json::Value SwapOf(const std::string& bands) {
    Write(kModelFile, R"({"connected_models": []})");
    Write(kCountryFile, R"({"country_code": "DE"})");
    Write(kBackhaulFile, R"({"radio_frequencies": )" + bands + "}");
    return Migrate()["backhaulSwapped"];
  }

  /// That the migration throws E (or what is derived from it) and leaves the device untouched, without a
  /// line. Gives what().
  template <typename E>
  std::string FailsUntouched() {
    const lab::Tree before = device_.Files().Snapshot();
    const std::string what = device_.RunThrowing<E>([] { Migrate13GlobalFiles({}); });
    EXPECT_EQ(device_.Files().Snapshot(), before);
    EXPECT_EQ(device_.Log(), LogLines{});
    return what;
  }

  testing_support::TestDevice device_;
};

TEST_F(Migrate13GlobalFilesTest, FourFilesBecomeOneDocumentAndTwoAreRemoved) {
  lab::Tree expected = device_.Files().Snapshot();
  EXPECT_EQ(Migrate(), ParseJson(R"({"logLevel": 2, "defaultModel": "LOTUS",
                                     "meshInfo": {"connectedModels": ["ORCHID"], "isRepeater": true},
                                     "countryCodeSetting": {"countryCode": "DE"}, "backhaulSwapped": true})"));
  EXPECT_EQ(device_.Log(), LogLines{});

  expected.erase(kModelFile);
  expected.erase(kCountryFile);
  lab::Tree after = device_.Files().Snapshot();
  EXPECT_EQ(after.at(kDocument).mode, 0600U);
  after.erase(kDocument);
  EXPECT_EQ(after, expected);
}

TEST_F(Migrate13GlobalFilesTest, NoFieldOfTheContextMatters) {
  const Json::Value document = Migrate({1, MeshRole::Standalone, Util::SupportedModel::CEDAR});
  EXPECT_EQ(document["defaultModel"], "LOTUS");
  EXPECT_EQ(document["meshInfo"]["isRepeater"], true);
}

TEST_F(Migrate13GlobalFilesTest, InformationStoresCountryAndSwapDoNotMatter) {
  device_.WriteInfo({{"kelpbios", "lotus"}, {"country_code", "FR"}, {"mesh_swap_backhaul_band", "no"}});
  const Json::Value document = Migrate();
  EXPECT_EQ(document["countryCodeSetting"]["countryCode"], "DE");
  EXPECT_EQ(document["backhaulSwapped"], true);
}

TEST_F(Migrate13GlobalFilesTest, OlderDocumentIsReplaced) {
  Write(kDocument, "old");
  EXPECT_EQ(Migrate()["logLevel"], 2);
}

TEST_F(Migrate13GlobalFilesTest, SecondRunFindsTheModelFileMissing) {
  Migrate();
  EXPECT_EQ(FailsUntouched<std::runtime_error>(), kMissing);
}

// The old files' existence

TEST_F(Migrate13GlobalFilesTest, EachOfThreeFilesIsRequired) {
  for (const char* file : {kModelFile, kCountryFile, kBackhaulFile}) {
    const std::string content = device_.Files().Read(file);
    device_.Files().Remove(file);
    EXPECT_EQ(FailsUntouched<std::runtime_error>(), kMissing) << file;
    Write(file, content);
  }
}

TEST_F(Migrate13GlobalFilesTest, MissingFileIsAPlainRuntimeError) {
  device_.Files().Remove(kCountryFile);
  try {
    device_.Run([] { Migrate13GlobalFiles({}); });
    ADD_FAILURE() << "nothing thrown";
  } catch (const std::system_error& error) {
    ADD_FAILURE() << error.what();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), kMissing);
  }
}

TEST_F(Migrate13GlobalFilesTest, FilesAreMissedBeforeAnyIsRead) {
  Write(kModelFile, "no JSON");
  Write(kCountryFile, "no JSON");
  device_.Files().Remove(kBackhaulFile);
  EXPECT_EQ(FailsUntouched<std::runtime_error>(), kMissing);
}

TEST_F(Migrate13GlobalFilesTest, FirstMissingFileEndsTheTest) {
  device_.Files().Remove(kModelFile);
  device_.Files().Remove(kCountryFile);
  device_.Files().Link(kCountryFile, kCountryFile);  // to test it would fail
  EXPECT_EQ(FailsUntouched<std::runtime_error>(), kMissing);
}

TEST_F(Migrate13GlobalFilesTest, CountryFileIsMissedBeforeTheBackhaulFileIsTested) {
  device_.Files().Remove(kCountryFile);
  device_.Files().Remove(kBackhaulFile);
  device_.Files().Link(kBackhaulFile, kBackhaulFile);
  EXPECT_EQ(FailsUntouched<std::runtime_error>(), kMissing);
}

TEST_F(Migrate13GlobalFilesTest, FileWhoseExistenceCannotBeTestedFails) {
  for (const char* file : {kModelFile, kCountryFile, kBackhaulFile}) {
    const std::string content = device_.Files().Read(file);
    device_.Files().Remove(file);
    device_.Files().Link(file, file);
    EXPECT_NE(FailsUntouched<std::filesystem::filesystem_error>(), "nothing thrown") << file;
    device_.Files().Remove(file);
    Write(file, content);
  }
}

TEST_F(Migrate13GlobalFilesTest, DanglingLinkIsAMissingFile) {
  device_.Files().Remove(kBackhaulFile);
  device_.Files().Link(kBackhaulFile, "/no/where");
  EXPECT_EQ(FailsUntouched<std::runtime_error>(), kMissing);
}

TEST_F(Migrate13GlobalFilesTest, FolderExistsButCannotBeRead) {
  for (const char* file : {kModelFile, kCountryFile, kBackhaulFile}) {
    const std::string content = device_.Files().Read(file);
    device_.Files().Remove(file);
    device_.Files().MakeDirectory(file);
    const std::string what = FailsUntouched<std::exception>();
    EXPECT_NE(what, "nothing thrown") << file;
    EXPECT_NE(what, kMissing) << file;
    device_.Files().Remove(file);
    Write(file, content);
  }
}

TEST_F(Migrate13GlobalFilesTest, LinkedFilesAreReadAndTheLinksRemoved) {
  Write("/etc/model", R"({"connected_models": ["CEDAR"]})");
  device_.Files().Remove(kModelFile);
  device_.Files().Link(kModelFile, "/etc/model");
  EXPECT_EQ(Migrate()["meshInfo"]["connectedModels"], ParseJson(R"(["CEDAR"])"));
  EXPECT_FALSE(device_.Files().Exists(kModelFile));
  EXPECT_TRUE(device_.Files().Exists("/etc/model"));
}

// Connected models

TEST_F(Migrate13GlobalFilesTest, NoConnectedModelsIsFine) {
  EXPECT_EQ(ModelsOf("[]"), ParseJson("[]"));
}

TEST_F(Migrate13GlobalFilesTest, ConnectedModelsAreASetInValueOrder) {
  EXPECT_EQ(ModelsOf(R"(["LOTUS", "ORCHID", "LOTUS"])"), ParseJson(R"(["ORCHID", "LOTUS"])"));
  EXPECT_EQ(ModelsOf(R"(["CEDAR", "MAPLE", "LOTUS", "ORCHID"])"),
            ParseJson(R"(["ORCHID", "LOTUS", "MAPLE", "CEDAR"])"));
}

TEST_F(Migrate13GlobalFilesTest, TheErrorMarkerIsAcceptedAndComesFirst) {
  EXPECT_EQ(ModelsOf(R"(["ORCHID", "Error", "CEDAR"])"), ParseJson(R"(["Error", "ORCHID", "CEDAR"])"));
}

TEST_F(Migrate13GlobalFilesTest, UnknownModelsFail) {
  for (const std::string name :
       {"lotus", "Lotus", "LOTUS ", " LOTUS", "", "ERROR", "error", "WILLOW", "%s"}) {
    Write(kModelFile, R"({"connected_models": ["ORCHID", ")" + name + R"("]})");
    EXPECT_EQ(FailsUntouched<RuntimeError>(),
              "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: " + name +
                  ": runtime error");
  }
}

TEST_F(Migrate13GlobalFilesTest, FirstUnknownModelIsTheOneReported) {
  Write(kModelFile, R"({"connected_models": ["OAK", "ELM"]})");
  EXPECT_EQ(FailsUntouched<RuntimeError>(),
            "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: OAK: runtime error");
}

TEST_F(Migrate13GlobalFilesTest, ModelsThatAreNoStringsAreTakenAsText) {
  const std::pair<const char*, const char*> kElements[] = {
      {"1", "1"}, {"-1", "-1"}, {"true", "true"}, {"false", "false"}, {"null", ""}};
  for (const auto& [element, text] : kElements) {
    Write(kModelFile, std::string(R"({"connected_models": [)") + element + "]}");
    EXPECT_EQ(FailsUntouched<RuntimeError>(),
              std::string("Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: ") +
                  text + ": runtime error");
  }
}

TEST_F(Migrate13GlobalFilesTest, ModelsThatHaveNoTextFail) {
  for (const char* element : {"{}", "[]", R"({"name": "LOTUS"})", R"(["LOTUS"])"}) {
    Write(kModelFile, std::string(R"({"connected_models": [)") + element + "]}");
    EXPECT_NE(FailsUntouched<std::exception>(), "nothing thrown") << element;
  }
}

TEST_F(Migrate13GlobalFilesTest, ModelFileOfAnotherFormFails) {
  for (const char* text : {"", "{", "no JSON", "[]", "{}", R"(["LOTUS"])", R"({"connected_models": "LOTUS"})",
                           R"({"connected_models": {"LOTUS": 1}})", R"({"connected_models": null})",
                           R"({"Connected_Models": []})", R"({"connected_models": []} x)"}) {
    Write(kModelFile, text);
    EXPECT_NE(FailsUntouched<std::exception>(), "nothing thrown") << text;
  }
}

// Country

TEST_F(Migrate13GlobalFilesTest, TheEndMarkerIsACountryHere) {
  Write(kCountryFile, R"({"country_code": "MaxCountryCode"})");
  EXPECT_EQ(Migrate()["countryCodeSetting"]["countryCode"], "MaxCountryCode");
}

TEST_F(Migrate13GlobalFilesTest, UnknownCountriesFailWithoutAFallBack) {
  for (const std::string code : {"us", "US ", "", "XX", "181"}) {
    Write(kCountryFile, R"({"country_code": ")" + code + R"("})");
    EXPECT_EQ(
        FailsUntouched<RuntimeError>(),
        "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: " + code + ": runtime error");
  }
}

TEST_F(Migrate13GlobalFilesTest, CountryFileOfAnotherFormFails) {
  for (const char* text :
       {"", "{", "[]", "{}", R"("DE")", R"({"country_code": 45})", R"({"country_code": null})",
        R"({"country_code": ["DE"]})", R"({"country": "DE"})"}) {
    Write(kCountryFile, text);
    EXPECT_NE(FailsUntouched<std::exception>(), "nothing thrown") << text;
  }
}

TEST_F(Migrate13GlobalFilesTest, ModelsAreReadBeforeTheCountry) {
  Write(kModelFile, R"({"connected_models": ["OAK"]})");
  Write(kCountryFile, R"({"country_code": "XX"})");
  EXPECT_NE(FailsUntouched<RuntimeError>().find("SupportedModel"), std::string::npos);
}

TEST_F(Migrate13GlobalFilesTest, CountryIsReadBeforeTheBackhaul) {
  Write(kCountryFile, R"({"country_code": "XX"})");
  Write(kBackhaulFile, "no JSON");
  EXPECT_NE(FailsUntouched<RuntimeError>().find("CountryCode"), std::string::npos);
}

// Backhaul

TEST_F(Migrate13GlobalFilesTest, TheFirstDecidingBandDecides) {
  EXPECT_EQ(SwapOf(R"(["Band5GHz_2", "Band5GHz_1"])"), true);
  EXPECT_EQ(SwapOf(R"(["Band5GHz_1", "Band5GHz_2"])"), false);
  EXPECT_EQ(SwapOf(R"(["Band5GHz_2"])"), true);
  EXPECT_EQ(SwapOf(R"(["Band5GHz_1"])"), false);
}

TEST_F(Migrate13GlobalFilesTest, OtherBandsAreSkipped) {
  EXPECT_EQ(
      SwapOf(R"(["Band2_4GHz", "Band5GHz", "band5ghz_1", "Band5GHz_1 ", "", "Band5GHz_2", "Band5GHz_1"])"),
      true);
  EXPECT_EQ(SwapOf(R"([3, -4, true, false, null, 1.5, "Band5GHz_2"])"), true);
}

TEST_F(Migrate13GlobalFilesTest, WithoutADecidingBandNothingIsSwapped) {
  EXPECT_EQ(SwapOf("[]"), false);
  EXPECT_EQ(SwapOf(R"(["Band2_4GHz", "Band5GHz_3", "BAND5GHZ_2", "Band5GHz_2 "])"), false);
}

TEST_F(Migrate13GlobalFilesTest, BandWithoutATextFails) {
  for (const char* element : {"{}", "[]", R"(["Band5GHz_2"])"}) {
    Write(kBackhaulFile, std::string(R"({"radio_frequencies": [)") + element + R"(, "Band5GHz_2"]})");
    EXPECT_NE(FailsUntouched<std::exception>(), "nothing thrown") << element;
  }
}

TEST_F(Migrate13GlobalFilesTest, TheWalkEndsBeforeABandWithoutAText) {
  EXPECT_EQ(SwapOf(R"(["Band5GHz_2", {}])"), true);
  EXPECT_EQ(SwapOf(R"(["Band5GHz_1", ["x"]])"), false);
}

TEST_F(Migrate13GlobalFilesTest, BackhaulFileOfAnotherFormFails) {
  for (const char* text : {"", "{", "[]", "{}", R"({"radio_frequencies": "Band5GHz_2"})",
                           R"({"radio_frequencies": null})", R"({"radio_frequency": []})"}) {
    Write(kBackhaulFile, text);
    EXPECT_NE(FailsUntouched<std::exception>(), "nothing thrown") << text;
  }
}

// Model of the device

TEST_F(Migrate13GlobalFilesTest, UnknownDeviceFails) {
  device_.WriteInfo({{"kelpbios", "ORCHID"}});
  EXPECT_EQ(FailsUntouched<std::runtime_error>(), "Invalid kelpbios value: ORCHID");
}

TEST_F(Migrate13GlobalFilesTest, MissingInformationStoreFails) {
  device_.Files().Remove("/usr/kelp/etc/info.conf");
  EXPECT_NE(FailsUntouched<std::runtime_error>(), "nothing thrown");
}

TEST_F(Migrate13GlobalFilesTest, DevicesModelIsAskedForLast) {
  device_.WriteInfo({});
  Write(kBackhaulFile, R"({"radio_frequencies": "x"})");
  const std::string what = FailsUntouched<std::exception>();
  EXPECT_NE(what.find("radio_frequencies"), std::string::npos) << what;
}

// Mesh role

TEST_F(Migrate13GlobalFilesTest, OnlyTheExactRoleIsARepeater) {
  for (const char* text : {"role=RE\n", "role=Re\n", "role=re \n", "role= re\n", "role=repeater\n", "role=\n",
                           "Role=re\n", "guest_role=re\n", ""}) {
    Write(kModelFile, R"({"connected_models": []})");
    Write(kCountryFile, R"({"country_code": "DE"})");
    Write(kRoleFile, text);
    EXPECT_EQ(Migrate()["meshInfo"]["isRepeater"], false) << text;
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(Migrate13GlobalFilesTest, MissingRoleFileIsNoRepeater) {
  device_.Files().Remove(kRoleFile);
  EXPECT_EQ(Migrate()["meshInfo"]["isRepeater"], false);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(Migrate13GlobalFilesTest, FolderInTheRoleFilesPlaceIsNoRepeater) {
  device_.Files().Remove(kRoleFile);
  device_.Files().MakeDirectory(kRoleFile);
  EXPECT_EQ(Migrate()["meshInfo"]["isRepeater"], false);
}

TEST_F(Migrate13GlobalFilesTest, RoleOfTheInformationStoreDoesNotMatter) {
  device_.WriteInfo({{"kelpbios", "lotus"}, {"mesh_network_role", "re"}});
  device_.Files().Remove(kRoleFile);
  EXPECT_EQ(Migrate()["meshInfo"]["isRepeater"], false);
}

// Writing and removing

TEST_F(Migrate13GlobalFilesTest, DocumentThatCannotBeWrittenRemovesNothing) {
  device_.Files().MakeDirectory(kDocument);
  EXPECT_NE(FailsUntouched<std::system_error>(), "nothing thrown");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
