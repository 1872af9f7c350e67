#include "platform/base64.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace std::string_literals;

/// What the decoder writes into a heap block of exactly `capacity` bytes, so that a sanitizer sees each byte
/// written behind it; none when it refuses.
std::optional<std::string> Decode(std::string_view text, std::size_t capacity = 64) {
  const auto buffer = std::make_unique<unsigned char[]>(capacity);
  // The source is no zero-terminated string either: its length is all that bounds it.
  const auto source = std::make_unique<char[]>(text.size());
  text.copy(source.get(), text.size());
  std::size_t length = capacity;
  const int result = KELPEncodingBase64Decode(source.get(), text.size(), buffer.get(), &length);
  EXPECT_TRUE(result == 0 || result == 1) << result;
  if (result == 0) return std::nullopt;
  EXPECT_LE(length, capacity);
  return std::string(buffer.get(), buffer.get() + length);
}

/// A plain encoder of the test's own.
std::string Encode(std::string_view bytes) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8U | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) text += k <= count ? kAlphabet[group >> (18 - 6 * k) & 0x3FU] : '=';
  }
  return text;
}

TEST(Base64Decode, GivesTheBytesOfEachPaddedForm) {
  EXPECT_EQ(Decode("Zg=="), "f");
  EXPECT_EQ(Decode("Zm8="), "fo");
  EXPECT_EQ(Decode("Zm9v"), "foo");
  EXPECT_EQ(Decode("Zm9vYg=="), "foob");
  EXPECT_EQ(Decode("Zm9vYmE="), "fooba");
  EXPECT_EQ(Decode("Zm9vYmFy"), "foobar");
}

TEST(Base64Decode, UsesTheStandardAlphabet) {
  EXPECT_EQ(Decode("+/+/"), "\xFB\xFF\xBF");
  EXPECT_EQ(Decode("-_-_"), std::nullopt);
}

TEST(Base64Decode, GivesAll256ByteValues) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(Decode(Encode(bytes), 256), bytes);
}

TEST(Base64Decode, GivesNULsInsideTheText) {
  EXPECT_EQ(Decode("AAAA"), "\0\0\0"s);
  EXPECT_EQ(Decode("YQBi"), "a\0b"s);
}

TEST(Base64Decode, OfNothingIsNothingSuccessfully) {
  unsigned char buffer = 0x5A;
  std::size_t length = 1;
  EXPECT_EQ(KELPEncodingBase64Decode("", 0, &buffer, &length), 1);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(buffer, 0x5A);
}

bool IsDigit(int byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
         byte == '+' || byte == '/';
}

TEST(Base64Decode, RefusesEveryByteOutsideTheAlphabetAtEveryPlace) {
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t place = 0; place < 8; ++place) {
      std::string text = "Zm9vYmFy";
      text[place] = static_cast<char>(byte);
      // In the last place '=' makes a padding whose digits may leave bits over; that case has its own test.
      if (byte == '=' && place == 7) continue;
      EXPECT_EQ(Decode(text).has_value(), IsDigit(byte)) << "byte " << byte << " at " << place;
    }
  }
}

TEST(Base64Decode, RefusesEverySingleByteAlone) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(Decode(std::string(1, static_cast<char>(byte))), std::nullopt) << byte;
  }
}

TEST(Base64Decode, RefusesEverySingleByteBehindACompleteText) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(Decode("Zm9v" + std::string(1, static_cast<char>(byte))), std::nullopt) << byte;
    EXPECT_EQ(Decode("Zm8=" + std::string(1, static_cast<char>(byte))), std::nullopt) << byte;
  }
}

TEST(Base64Decode, RefusesMissingPadding) {
  for (const auto* text : {"Zg", "Zm8", "Zg=", "Zm9vY", "Zm9vYg", "Zm9vYg=", "Zm9vYmE"}) {
    EXPECT_EQ(Decode(text), std::nullopt) << text;
  }
}

TEST(Base64Decode, RefusesPaddingThatIsTooMuchOrMisplaced) {
  for (const auto* text : {"=", "==", "===", "====", "Z===", "Zg===", "Zm8==", "Zm9v=", "Zm9v==", "Zm9v====",
                           "Z=g=", "=Zg=", "Zg==Zg==", "Zm8=Zm8=", "Zg==Zm9v"}) {
    EXPECT_EQ(Decode(text), std::nullopt) << text;
  }
}

TEST(Base64Decode, RefusesWhiteSpaceEverywhere) {
  for (const std::string space : {" ", "\n", "\r\n", "\t"}) {
    EXPECT_EQ(Decode(space), std::nullopt);
    EXPECT_EQ(Decode(space + "Zm9v"), std::nullopt);
    EXPECT_EQ(Decode("Zm" + space + "9v"), std::nullopt);
    EXPECT_EQ(Decode("Zm9v" + space), std::nullopt);
    EXPECT_EQ(Decode("Zg==" + space), std::nullopt);
    EXPECT_EQ(Decode("Zg=" + space + "="), std::nullopt);
  }
}

TEST(Base64Decode, TakesTheLengthAndNotANULForTheEnd) {
  EXPECT_EQ(Decode("Zm9v\0Zm9v"s), std::nullopt);
  EXPECT_EQ(Decode("Zm9v\0"s), std::nullopt);
  EXPECT_EQ(Decode(std::string_view("Zm9vYmFy", 4)), "foo");
}

class Base64Capacity : public ::testing::TestWithParam<std::size_t> {};

TEST_P(Base64Capacity, IsFilledToTheLastByteAndNotOneFurther) {
  const std::size_t capacity = GetParam();
  std::string bytes;
  for (std::size_t i = 0; i <= capacity; ++i) bytes += static_cast<char>(i * 7 + 1);

  const std::string fitting = bytes.substr(0, capacity);
  EXPECT_EQ(Decode(Encode(fitting), capacity), fitting);
  EXPECT_EQ(Decode(Encode(bytes), capacity), std::nullopt);

  // The same with guard bytes: where no sanitizer runs, they show a byte written behind the capacity.
  for (const std::string& text : {fitting, bytes}) {
    std::string guarded(capacity + 16, '\x5A');
    std::size_t length = capacity;
    const std::string encoded = Encode(text);
    KELPEncodingBase64Decode(encoded.data(), encoded.size(), reinterpret_cast<unsigned char*>(guarded.data()),
                             &length);
    EXPECT_EQ(guarded.substr(capacity), std::string(16, '\x5A'));
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, Base64Capacity, ::testing::Values(1, 2, 3, 4, 8189, 8190, 8191, 8192, 8193));

TEST(Base64Decode, WritesNoNULBehindTheDecodedBytes) {
  std::string buffer(8, '\x5A');
  std::size_t length = buffer.size();
  ASSERT_EQ(KELPEncodingBase64Decode("Zm9v", 4, reinterpret_cast<unsigned char*>(buffer.data()), &length), 1);
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(buffer.substr(0, 3), "foo");
  EXPECT_EQ(buffer.substr(3), std::string(5, '\x5A'));
}

TEST(Base64Decode, OfNothingFitsIntoNothing) {
  EXPECT_EQ(Decode("", 0), "");
  EXPECT_EQ(Decode("Zg==", 0), std::nullopt);
}

}  // namespace
