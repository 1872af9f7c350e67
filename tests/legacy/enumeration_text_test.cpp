#include "legacy/enumeration_text.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/exceptions.h"
#include "tests/platform/country_names.h"

namespace KELP::Wifi::Updater {
namespace {

using namespace std::string_literals;
using Util::SupportedModel;

template <typename Convert>
std::string ErrorOf(Convert convert, const std::string& text) {
  try {
    convert(text);
  } catch (const RuntimeError& error) {
    return error.what();
  }
  return "(nothing was thrown)";
}

TEST(ToCountryCode, KnowsAll198Names) {
  for (std::size_t value = 0; value < kCountryNames.size(); ++value) {
    EXPECT_EQ(static_cast<std::size_t>(ToCountryCode(std::string(kCountryNames[value]))), value)
        << kCountryNames[value];
  }
}

TEST(ToCountryCode, TakesTheEndMarkerLikeAnyOtherName) {
  EXPECT_EQ(static_cast<int>(ToCountryCode("MaxCountryCode")), 197);
}

TEST(ToCountryCode, ThrowsForEveryOtherTextWithTypeNameAndText) {
  for (const auto* text : {"us", "US ", " US", "US\r", "", "U", "USA", "UK", "XX", "181", "maxcountrycode",
                           "MaxCountryCode ", "MAXCOUNTRYCODE", "%s%n", "CountryCode::US"}) {
    EXPECT_EQ(
        ErrorOf(ToCountryCode, text),
        "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: "s + text + ": runtime error");
  }
}

TEST(ToCountryCode, TextWithANULIsNoName) {
  EXPECT_THROW(ToCountryCode("US\0"s), RuntimeError);
  EXPECT_THROW(ToCountryCode("\0US"s), RuntimeError);
}

TEST(ToCountryCode, LongTextStandsWholeInTheError) {
  const std::string text(5000, 'x');
  EXPECT_EQ(
      ErrorOf(ToCountryCode, text),
      "Failed to convert string to enum class [N4KELP4Wifi11CountryCodeE]: " + text + ": runtime error");
}

TEST(ToSupportedModel, KnowsTheFourModelsAndError) {
  EXPECT_EQ(static_cast<int>(ToSupportedModel("ORCHID")), 0);
  EXPECT_EQ(static_cast<int>(ToSupportedModel("LOTUS")), 1);
  EXPECT_EQ(static_cast<int>(ToSupportedModel("MAPLE")), 2);
  EXPECT_EQ(static_cast<int>(ToSupportedModel("CEDAR")), 3);
  EXPECT_EQ(static_cast<int>(ToSupportedModel("Error")), -1);
}

TEST(ToSupportedModel, ThrowsForEveryOtherTextWithTypeNameAndText) {
  for (const auto* text : {"orchid", "Lotus", "LOTUS ", " LOTUS", "", "error", "ERROR", "1", "OAK", "%s"}) {
    EXPECT_EQ(ErrorOf(ToSupportedModel, text),
              "Failed to convert string to enum class [N4KELP4Wifi4Util14SupportedModelE]: "s + text +
                  ": runtime error");
  }
}

}  // namespace
}  // namespace KELP::Wifi::Updater
