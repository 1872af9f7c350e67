#include "base/enum_names.h"

#include <gtest/gtest.h>

#include "platform/records/country_code.h"
#include "platform/records/supported_model.h"
#include "tests/platform/country_names.h"

namespace KELP::Wifi {
namespace {

using Util::SupportedModel;

TEST(PlatformEnumerationNames, Of198CountriesGoBothWays) {
  ASSERT_EQ(kCountryNames.size(), 198U);
  for (std::size_t value = 0; value < kCountryNames.size(); ++value) {
    const auto country = static_cast<CountryCode>(value);
    EXPECT_EQ(EnumName(country), kCountryNames[value]) << value;
    EXPECT_EQ(EnumFromName<CountryCode>(kCountryNames[value]), country) << kCountryNames[value];
  }
}

TEST(PlatformEnumerationNames, ReachBeyondValue127) {
  EXPECT_EQ(EnumName(static_cast<CountryCode>(127)), "NC");
  EXPECT_EQ(EnumName(static_cast<CountryCode>(128)), "NF");
  EXPECT_EQ(EnumName(static_cast<CountryCode>(181)), "US");
  EXPECT_EQ(EnumName(static_cast<CountryCode>(196)), "ZW");
  EXPECT_EQ(EnumName(static_cast<CountryCode>(197)), "MaxCountryCode");
}

TEST(PlatformEnumerationNames, ValueBehindTheLastHasNoName) {
  EXPECT_EQ(EnumName(static_cast<CountryCode>(198)), "");
  EXPECT_EQ(EnumName(static_cast<CountryCode>(65535)), "");
}

TEST(PlatformEnumerationNames, AreComparedWholeAndByCase) {
  for (const auto* name : {"us", "Us", "U", "USA", " US", "US ", "", "181", "maxcountrycode", "MaxCountryCod",
                           "UK", "CountryCode::US"}) {
    EXPECT_EQ(EnumFromName<CountryCode>(name), std::nullopt) << name;
  }
  EXPECT_EQ(EnumFromName<CountryCode>(std::string_view("US\0", 3)), std::nullopt);
}

TEST(PlatformEnumerationNames, OfTheModels) {
  const std::pair<std::string_view, int> models[] = {
      {"Error", -1}, {"ORCHID", 0}, {"LOTUS", 1}, {"MAPLE", 2}, {"CEDAR", 3}};
  for (const auto& [name, value] : models) {
    EXPECT_EQ(EnumName(static_cast<SupportedModel>(value)), name);
    EXPECT_EQ(EnumFromName<SupportedModel>(name), static_cast<SupportedModel>(value));
  }
  EXPECT_EQ(EnumName(static_cast<SupportedModel>(4)), "");
  EXPECT_EQ(EnumName(static_cast<SupportedModel>(-2)), "");
  EXPECT_EQ(EnumFromName<SupportedModel>("orchid"), std::nullopt);
  EXPECT_EQ(EnumFromName<SupportedModel>("ERROR"), std::nullopt);
}

}  // namespace
}  // namespace KELP::Wifi
