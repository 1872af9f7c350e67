#include "migration/global_settings.h"

#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/json_text.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using testing_support::ParseJson;
using Util::SupportedModel;

constexpr const char* kDocument = "/usr/kelp/etc/wifi/global.json";
constexpr const char* kEnumerationSuffix = ": runtime error";

class GlobalSettingsTest : public ::testing::Test {
 protected:
  GlobalSettingsTest() { device_.Files().MakeDirectory("/usr/kelp/etc/wifi"); }

  Json::Value Migrate(const UpdateContext& context = {1, MeshRole::Standalone, SupportedModel::ORCHID}) {
    device_.Run([&] { MigrateGlobalSettings(context); });
    return ParseJson(device_.Files().Read(kDocument));
  }
  Json::Value Migrate(const Entries& info) {
    device_.WriteInfo(info);
    return Migrate();
  }
  /// The country that is written for `code`, without a backhaul line.
  std::string CountryOf(const std::string& code) {
    return Migrate({{"country_code", code},
                    {"mesh_swap_backhaul_band", "no"}})["countryCodeSetting"]["countryCode"]
        .asString();
  }

  testing_support::TestDevice device_;
};

TEST_F(GlobalSettingsTest, TheDocumentHasItsFiveValuesAndNoOther) {
  EXPECT_EQ(Migrate({{"country_code", "DE"}, {"mesh_swap_backhaul_band", "yes"}}),
            ParseJson(R"({"logLevel": 2, "defaultModel": "ORCHID",
                          "meshInfo": {"connectedModels": [], "isRepeater": false},
                          "countryCodeSetting": {"countryCode": "DE"}, "backhaulSwapped": true})"));
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(GlobalSettingsTest, TheDocumentIsForNobodyElsesEyes) {
  Migrate();
  EXPECT_EQ(device_.Files().Snapshot().at(kDocument).mode, 0600U);
}

TEST_F(GlobalSettingsTest, AnOlderDocumentIsReplaced) {
  device_.Files().Write(kDocument, "old");
  EXPECT_EQ(Migrate()["logLevel"].asInt(), 2);
}

// The device

TEST_F(GlobalSettingsTest, ModelAndLogLevelFollowFromTheContextAlone) {
  device_.WriteInfo(
      {{"kelpbios", "cedar"}, {"log_level", "5"}, {"country_code", "DE"}, {"mesh_swap_backhaul_band", "no"}});
  const std::pair<SupportedModel, const char*> kModels[] = {{SupportedModel::ORCHID, "ORCHID"},
                                                            {SupportedModel::LOTUS, "LOTUS"},
                                                            {SupportedModel::MAPLE, "MAPLE"},
                                                            {SupportedModel::CEDAR, "CEDAR"}};
  for (const auto& [model, name] : kModels) {
    const Json::Value document = Migrate({1, MeshRole::Standalone, model});
    EXPECT_EQ(document["defaultModel"], name);
    EXPECT_EQ(document["logLevel"], 2);
  }
}

TEST_F(GlobalSettingsTest, StandaloneHasNoConnectedModels) {
  EXPECT_EQ(Migrate({1, MeshRole::Standalone, SupportedModel::LOTUS})["meshInfo"],
            ParseJson(R"({"connectedModels": [], "isRepeater": false})"));
}

TEST_F(GlobalSettingsTest, MeshRouterHasTheMeshModelAndIsNoRepeater) {
  EXPECT_EQ(Migrate({1, MeshRole::MeshRouter, SupportedModel::MAPLE})["meshInfo"],
            ParseJson(R"({"connectedModels": ["LOTUS"], "isRepeater": false})"));
}

TEST_F(GlobalSettingsTest, RepeaterHasTheMeshModelAndIsARepeater) {
  EXPECT_EQ(Migrate({1, MeshRole::Repeater, SupportedModel::ORCHID})["meshInfo"],
            ParseJson(R"({"connectedModels": ["LOTUS"], "isRepeater": true})"));
}

TEST_F(GlobalSettingsTest, TheMeshRoleIsNotAskedForAgain) {
  device_.WriteInfo({{"mesh_network_role", "re"}, {"country_code", "DE"}, {"mesh_swap_backhaul_band", "no"}});
  device_.Files().Write("/usr/kelp/etc/mesh/mesh.conf", R"({"repeater_nodes": [1]})");
  EXPECT_EQ(Migrate({1, MeshRole::Standalone, SupportedModel::ORCHID})["meshInfo"],
            ParseJson(R"({"connectedModels": [], "isRepeater": false})"));
}

// Country

TEST_F(GlobalSettingsTest, CountriesAreTakenWithoutALine) {
  for (const char* code : {"AD", "AN", "DE", "KE", "US", "UY", "ZW"}) {
    EXPECT_EQ(CountryOf(code), code);
    EXPECT_EQ(device_.Log(), LogLines{}) << code;
  }
}

TEST_F(GlobalSettingsTest, TheEndMarkerIsTakenLikeACountry) {
  EXPECT_EQ(CountryOf("MaxCountryCode"), "MaxCountryCode");
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(GlobalSettingsTest, UnknownCountriesAreUSWithALine) {
  for (const std::string code :
       {"us", "US ", " US", "De", "", "XX", "USA", "U", "maxcountrycode", "181", "%s"}) {
    EXPECT_EQ(CountryOf(code), "US") << '"' << code << '"';
    EXPECT_EQ(device_.Log(),
              LogLines{Error(
                  280,
                  "Failed to country code, use US to instead. error: Failed to convert string to enum class "
                  "[N4KELP4Wifi11CountryCodeE]: " +
                      code + kEnumerationSuffix)});
  }
}

TEST_F(GlobalSettingsTest, MissingCountryIsUSWithALineThatSaysWhy) {
  const Json::Value document = Migrate({{"mesh_swap_backhaul_band", "no"}});
  EXPECT_EQ(document["countryCodeSetting"]["countryCode"], "US");
  ASSERT_EQ(device_.Log().size(), 1U);
  const std::string start = Error(280, "Failed to country code, use US to instead. error: ");
  EXPECT_EQ(device_.Log()[0].substr(0, start.size()), start);
  EXPECT_GT(device_.Log()[0].size(), start.size());
}

// Backhaul

TEST_F(GlobalSettingsTest, OnlyTheExactWordYesSwapsTheBackhaul) {
  EXPECT_EQ(Migrate({{"country_code", "DE"}, {"mesh_swap_backhaul_band", "yes"}})["backhaulSwapped"], true);
  for (const char* word : {"Yes", "YES", "yEs", "yes ", " yes", "1", "true", "no", ""}) {
    EXPECT_EQ(Migrate({{"country_code", "DE"}, {"mesh_swap_backhaul_band", word}})["backhaulSwapped"], false)
        << '"' << word << '"';
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(GlobalSettingsTest, MissingBackhaulIsNotSwappedWithALineThatSaysWhy) {
  EXPECT_EQ(Migrate({{"country_code", "DE"}})["backhaulSwapped"], false);
  ASSERT_EQ(device_.Log().size(), 1U);
  const std::string start = Error(300, "Failed to get backhaul swap, default false: ");
  EXPECT_EQ(device_.Log()[0].substr(0, start.size()), start);
  EXPECT_GT(device_.Log()[0].size(), start.size());
}

TEST_F(GlobalSettingsTest, WithoutAnInformationStoreBothFallBackTheCountryFirst) {
  EXPECT_EQ(Migrate(), ParseJson(R"({"logLevel": 2, "defaultModel": "ORCHID",
                                     "meshInfo": {"connectedModels": [], "isRepeater": false},
                                     "countryCodeSetting": {"countryCode": "US"}, "backhaulSwapped": false})"));
  ASSERT_EQ(device_.Log().size(), 2U);
  EXPECT_TRUE(device_.Log()[0].starts_with(Error(280, "Failed to country code, use US to instead. error: ")));
  EXPECT_TRUE(device_.Log()[1].starts_with(Error(300, "Failed to get backhaul swap, default false: ")));
}

// Writing

TEST_F(GlobalSettingsTest, DocumentThatCannotBeWrittenThrows) {
  device_.WriteInfo({{"country_code", "DE"}, {"mesh_swap_backhaul_band", "no"}});
  device_.Files().Remove("/usr/kelp/etc/wifi");
  EXPECT_THROW(Migrate(), std::system_error);
  device_.Files().Write("/usr/kelp/etc/wifi", "no folder");
  EXPECT_THROW(Migrate(), std::system_error);
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(GlobalSettingsTest, FolderInTheDocumentsPlaceThrows) {
  device_.Files().MakeDirectory(kDocument);
  EXPECT_THROW(Migrate(), std::system_error);
}

}  // namespace
}  // namespace KELP::Wifi::Updater
