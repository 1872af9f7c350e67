#include "platform/records/global_data.h"

#include <gtest/gtest.h>

#include <utility>

#include "platform/stand_in/json/record_json.h"
#include "tests/platform/country_names.h"
#include "tests/support/json_text.h"

namespace KELP::Wifi::Daemon {
namespace {

using testing_support::ParseJson;
using Util::LogLevel;
using Util::SupportedModel;

GlobalData Sample() {
  GlobalData data;
  data.SetLogLevel(LogLevel{2});
  data.SetDefaultModel(SupportedModel::CEDAR);
  data.SetMeshInfo({.connectedModels = {SupportedModel::LOTUS}, .isRepeater = true});
  data.SetCountryCodeSetting({CountryCode::DE});
  data.SetBackhaulSwapped(true);
  return data;
}

TEST(GlobalData, DocumentHasItsMembersByTheirNamesAndKinds) {
  EXPECT_EQ(ToJson(Sample()), ParseJson(R"({
    "logLevel": 2,
    "defaultModel": "CEDAR",
    "meshInfo": {"connectedModels": ["LOTUS"], "isRepeater": true},
    "countryCodeSetting": {"countryCode": "DE"},
    "backhaulSwapped": true
  })"));
}

TEST(GlobalData, WithoutConnectedModelsHasAnEmptyArray) {
  GlobalData data = Sample();
  data.SetMeshInfo({});
  EXPECT_EQ(ToJson(data)["meshInfo"], ParseJson(R"({"connectedModels": [], "isRepeater": false})"));
}

TEST(GlobalData, ConnectedModelsStandInTheOrderOfTheirSignedValues) {
  GlobalData data = Sample();
  data.SetMeshInfo({.connectedModels = {SupportedModel::CEDAR, SupportedModel::ORCHID, SupportedModel::Error,
                                        SupportedModel::MAPLE, SupportedModel::LOTUS, SupportedModel::ORCHID},
                    .isRepeater = false});
  EXPECT_EQ(ToJson(data)["meshInfo"]["connectedModels"],
            ParseJson(R"(["Error", "ORCHID", "LOTUS", "MAPLE", "CEDAR"])"));
}

TEST(GlobalData, WritesEveryModelAndEveryCountryByItsName) {
  const std::pair<SupportedModel, const char*> models[] = {{SupportedModel::Error, "Error"},
                                                           {SupportedModel::ORCHID, "ORCHID"},
                                                           {SupportedModel::LOTUS, "LOTUS"},
                                                           {SupportedModel::MAPLE, "MAPLE"},
                                                           {SupportedModel::CEDAR, "CEDAR"}};
  GlobalData data = Sample();
  for (const auto& [model, name] : models) {
    data.SetDefaultModel(model);
    EXPECT_EQ(ToJson(data)["defaultModel"], Json::Value(name));
  }
  for (std::size_t country = 0; country < kCountryNames.size(); ++country) {
    data.SetCountryCodeSetting({static_cast<CountryCode>(country)});
    EXPECT_EQ(ToJson(data)["countryCodeSetting"]["countryCode"],
              Json::Value(std::string(kCountryNames[country])));
  }
}

TEST(GlobalData, SettersCopyWhatTheyAreGiven) {
  MeshInfo mesh{.connectedModels = {SupportedModel::LOTUS}, .isRepeater = true};
  CountryCodeSetting country{CountryCode::DE};
  GlobalData data = Sample();
  data.SetMeshInfo(mesh);
  data.SetCountryCodeSetting(country);
  mesh.connectedModels.clear();
  country.countryCode = CountryCode::US;
  EXPECT_EQ(data, Sample());
}

}  // namespace
}  // namespace KELP::Wifi::Daemon
