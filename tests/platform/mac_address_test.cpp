#include "platform/mac_address.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace KELP::Wifi::Util {
namespace {

using namespace std::string_literals;

TEST(MACAddress, WithoutATextIsAllZero) {
  EXPECT_EQ(MACAddress().ToString(), "00:00:00:00:00:00");
}

TEST(MACAddress, TextFormIsLowerCaseWithColons) {
  EXPECT_EQ(MACAddress("01:23:45:67:89:ab").ToString(), "01:23:45:67:89:ab");
  EXPECT_EQ(MACAddress("CD:EF:AB:00:FF:10").ToString(), "cd:ef:ab:00:ff:10");
  EXPECT_EQ(MACAddress("aB-Cd-eF-0a-B0-9C").ToString(), "ab:cd:ef:0a:b0:9c");
}

TEST(MACAddress, EveryByteValueIsTakenInEveryGroup) {
  constexpr const char* kDigits = "0123456789abcdef";
  for (int byte = 0; byte < 256; ++byte) {
    const std::string group{kDigits[byte / 16], kDigits[byte % 16]};
    for (std::size_t place = 0; place < 6; ++place) {
      std::string text = "11:22:33:44:55:66";
      text.replace(place * 3, 2, group);
      EXPECT_EQ(MACAddress(text).ToString(), text);
    }
  }
}

TEST(MACAddress, EqualAddressesAreEqualWhateverTheirSpelling) {
  EXPECT_EQ(MACAddress("aa:bb:cc:dd:ee:ff"), MACAddress("AA-BB-CC-DD-EE-FF"));
  EXPECT_NE(MACAddress("aa:bb:cc:dd:ee:ff"), MACAddress("aa:bb:cc:dd:ee:fe"));
}

TEST(MACAddress, EmptyTextThrows) {
  EXPECT_THROW(MACAddress(""), std::invalid_argument);
}

TEST(MACAddress, OtherLengthsThrow) {
  const std::string text = "01:23:45:67:89:ab:cd";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    if (length == 17) continue;
    EXPECT_THROW(MACAddress(text.substr(0, length)), std::invalid_argument) << length;
  }
}

TEST(MACAddress, BlanksAroundItThrow) {
  for (const auto* text : {" 01:23:45:67:89:ab", "01:23:45:67:89:ab ", "01:23:45:67:89:ab\n",
                           "01:23:45:67:89:ab\r", " 1:23:45:67:89:ab", "01:23:45:67:89:a "}) {
    EXPECT_THROW(MACAddress{text}, std::invalid_argument) << text;
  }
}

TEST(MACAddress, MixedSeparatorsThrow) {
  for (std::size_t place = 0; place < 5; ++place) {
    std::string colons = "01:23:45:67:89:ab";
    colons[place * 3 + 2] = '-';
    EXPECT_THROW(MACAddress{colons}, std::invalid_argument) << colons;
    std::string hyphens = "01-23-45-67-89-ab";
    hyphens[place * 3 + 2] = ':';
    EXPECT_THROW(MACAddress{hyphens}, std::invalid_argument) << hyphens;
  }
}

TEST(MACAddress, OtherSeparatorsAndNoneThrow) {
  for (const auto* text : {"01.23.45.67.89.ab", "01 23 45 67 89 ab", "01_23_45_67_89_ab", "0123456789ab",
                           "0123.4567.89ab", "01230456078909ab0"}) {
    EXPECT_THROW(MACAddress{text}, std::invalid_argument) << text;
  }
}

TEST(MACAddress, EveryOtherByteInPlaceOfADigitThrows) {
  for (int byte = 0; byte < 256; ++byte) {
    const bool is_digit =
        (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
    if (is_digit) continue;
    for (const std::size_t place : {0U, 1U, 6U, 7U, 15U, 16U}) {
      std::string text = "01:23:45:67:89:ab";
      text[place] = static_cast<char>(byte);
      EXPECT_THROW(MACAddress{text}, std::invalid_argument) << byte << " at " << place;
    }
  }
}

TEST(MACAddress, SignsAndPrefixesAreNoDigits) {
  for (const auto* text : {"+1:23:45:67:89:ab", "-1:23:45:67:89:ab", "0x:23:45:67:89:ab"}) {
    EXPECT_THROW(MACAddress{text}, std::invalid_argument) << text;
  }
}

TEST(MACAddress, GroupsOfOtherWidthsThrowAtTheRightTotalLength) {
  for (const auto* text :
       {"0:123:45:67:89:ab", "012:3:45:67:89:ab", "01:23:45:67:8:9ab", "01:23:45:67:89ab:"}) {
    EXPECT_THROW(MACAddress{text}, std::invalid_argument) << text;
  }
}

}  // namespace
}  // namespace KELP::Wifi::Util
