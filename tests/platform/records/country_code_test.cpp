#include "platform/records/country_code.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace KELP::Wifi {
namespace {

TEST(CountryCode, IsAnUnsigned16BitNumber) {
  EXPECT_TRUE((std::is_same_v<std::underlying_type_t<CountryCode>, std::uint16_t>));
}

TEST(CountryCode, ValuesAreThePositionsInTheList) {
  EXPECT_EQ(static_cast<int>(CountryCode::AD), 0);
  EXPECT_EQ(static_cast<int>(CountryCode::AN), 7);
  EXPECT_EQ(static_cast<int>(CountryCode::DE), 45);
  EXPECT_EQ(static_cast<int>(CountryCode::NC), 127);
  EXPECT_EQ(static_cast<int>(CountryCode::NF), 128);
  EXPECT_EQ(static_cast<int>(CountryCode::US), 181);
  EXPECT_EQ(static_cast<int>(CountryCode::ZW), 196);
  EXPECT_EQ(static_cast<int>(CountryCode::MaxCountryCode), 197);
}

}  // namespace
}  // namespace KELP::Wifi
