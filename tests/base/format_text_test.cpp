#include "base/format_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace KELP::Wifi {
namespace {

TEST(TryFormatText, IsWhatPrintfWrites) {
  EXPECT_EQ(TryFormatText("plain"), "plain");
  EXPECT_EQ(TryFormatText("%s", ""), "");
  EXPECT_EQ(TryFormatText("%s:%d %s", "name", 12, "text"), "name:12 text");
  EXPECT_EQ(TryFormatText("100%%"), "100%");
  EXPECT_EQ(TryFormatText("%d and %d", INT_MIN, INT_MAX), "-2147483648 and 2147483647");
}

TEST(TryFormatText, HasNoLongestText) {
  for (const std::size_t size : {1U, 255U, 256U, 1023U, 1024U, 4096U, 1'000'000U}) {
    const std::string word(size, 'w');
    EXPECT_EQ(TryFormatText("<%s>", word.c_str()), "<" + word + ">") << size;
  }
}

TEST(TryFormatText, KeepsPercentSignsOfItsArguments) {
  EXPECT_EQ(TryFormatText("%s", "%s%n%d"), "%s%n%d");
}

TEST(TryFormatText, KeepsBytesThatAreNoUTF8) {
  EXPECT_EQ(TryFormatText("%s", "\xFF\xFE\x80"), "\xFF\xFE\x80");
}

}  // namespace
}  // namespace KELP::Wifi
