#include "migration/global_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <system_error>
#include <utility>

#include "tests/support/json_text.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;
using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using testing_support::ParseJson;
using Util::SupportedModel;

constexpr const char* kDocument = "/usr/kelp/etc/wifi/global.json";
const std::string kNoCountry = Error(280, "Failed to country code, use US to instead. error: ");
const std::string kNoBackhaul = Error(300, "Failed to get backhaul swap, default false: ");

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

  testing_support::TestDevice device_;
};

TEST_F(GlobalSettingsTest, DocumentHasItsFiveValuesAndNoOtherAndReplacesAnOlderOne) {
  device_.Files().Write(kDocument, "old");
  EXPECT_EQ(Migrate({{"country_code", "DE"}, {"mesh_swap_backhaul_band", "yes"}}),
            ParseJson(R"({"logLevel": 2, "defaultModel": "ORCHID",
                          "meshInfo": {"connectedModels": [], "isRepeater": false},
                          "countryCodeSetting": {"countryCode": "DE"}, "backhaulSwapped": true})"));
  EXPECT_EQ(device_.Log(), LogLines{});
}

// What the store and the mesh file say of model and role is not asked for again.
TEST_F(GlobalSettingsTest, ModelAndMeshFollowFromTheContextAlone) {
  device_.WriteInfo({{"kelpbios", "cedar"},
                     {"log_level", "5"},
                     {"mesh_network_role", "re"},
                     {"country_code", "DE"},
                     {"mesh_swap_backhaul_band", "no"}});
  device_.Files().Write("/usr/kelp/etc/mesh/mesh.conf", R"({"repeater_nodes": [1]})");
  const std::pair<SupportedModel, const char*> models[] = {{SupportedModel::ORCHID, "ORCHID"},
                                                           {SupportedModel::LOTUS, "LOTUS"},
                                                           {SupportedModel::MAPLE, "MAPLE"},
                                                           {SupportedModel::CEDAR, "CEDAR"}};
  const std::pair<MeshRole, const char*> roles[] = {
      {MeshRole::Standalone, R"({"connectedModels": [], "isRepeater": false})"},
      {MeshRole::MeshRouter, R"({"connectedModels": ["LOTUS"], "isRepeater": false})"},
      {MeshRole::Repeater, R"({"connectedModels": ["LOTUS"], "isRepeater": true})"}};
  for (const auto& [model, name] : models) {
    for (const auto& [role, mesh] : roles) {
      const Json::Value document = Migrate({1, role, model});
      EXPECT_EQ(document["defaultModel"], name);
      EXPECT_EQ(document["meshInfo"], ParseJson(mesh));
      EXPECT_EQ(document["logLevel"], 2);
    }
  }
}

TEST_F(GlobalSettingsTest, CountriesAreTakenWithoutALineAndTheEndMarkerIsOne) {
  for (const char* code : {"AD", "AN", "DE", "KE", "US", "UY", "ZW", "MaxCountryCode"}) {
    const Json::Value document = Migrate({{"country_code", code}, {"mesh_swap_backhaul_band", "no"}});
    EXPECT_EQ(document["countryCodeSetting"]["countryCode"], code);
    EXPECT_EQ(device_.Log(), LogLines{}) << code;
  }
}

TEST_F(GlobalSettingsTest, UnknownCountriesAreUSWithALine) {
  for (const std::string code :
       {"us", "US ", " US", "De", "", "XX", "USA", "U", "maxcountrycode", "181", "%s"}) {
    const Json::Value document = Migrate({{"country_code", code}, {"mesh_swap_backhaul_band", "no"}});
    EXPECT_EQ(document["countryCodeSetting"]["countryCode"], "US") << '"' << code << '"';
    EXPECT_EQ(device_.Log(), LogLines{kNoCountry +
                                      "Failed to convert string to enum class "
                                      "[N4KELP4Wifi11CountryCodeE]: " +
                                      code + ": runtime error"});
  }
}

TEST_F(GlobalSettingsTest, OnlyTheExactWordYesSwapsTheBackhaul) {
  for (const char* word : {"yes", "Yes", "YES", "yEs", "yes ", " yes", "1", "true", "no", ""}) {
    const Json::Value document = Migrate({{"country_code", "DE"}, {"mesh_swap_backhaul_band", word}});
    EXPECT_EQ(document["backhaulSwapped"], word == std::string("yes")) << '"' << word << '"';
    EXPECT_EQ(device_.Log(), LogLines{});
  }
}

TEST_F(GlobalSettingsTest, WhatIsMissingFallsBackWithALineThatSaysWhyTheCountryFirst) {
  const auto no_country = AllOf(StartsWith(kNoCountry), Not(kNoCountry));
  const auto no_backhaul = AllOf(StartsWith(kNoBackhaul), Not(kNoBackhaul));
  EXPECT_EQ(Migrate(), ParseJson(R"({"logLevel": 2, "defaultModel": "ORCHID",
                                     "meshInfo": {"connectedModels": [], "isRepeater": false},
                                     "countryCodeSetting": {"countryCode": "US"}, "backhaulSwapped": false})"));
  EXPECT_THAT(device_.Log(), ElementsAre(no_country, no_backhaul));
  EXPECT_EQ(Migrate({{"mesh_swap_backhaul_band", "yes"}})["countryCodeSetting"]["countryCode"], "US");
  EXPECT_THAT(device_.Log(), ElementsAre(no_country));
  EXPECT_EQ(Migrate({{"country_code", "DE"}})["backhaulSwapped"], false);
  EXPECT_THAT(device_.Log(), ElementsAre(no_backhaul));
}

TEST_F(GlobalSettingsTest, DocumentThatCannotBeWrittenThrows) {
  device_.WriteInfo({{"country_code", "DE"}, {"mesh_swap_backhaul_band", "no"}});
  device_.Files().MakeDirectory(kDocument);
  EXPECT_THROW(Migrate(), std::system_error);
  device_.Files().Remove("/usr/kelp/etc/wifi");
  EXPECT_THROW(Migrate(), std::system_error);
  EXPECT_EQ(device_.Log(), LogLines{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
