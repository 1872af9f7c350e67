#include "base/format_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace KELP::Wifi {
namespace {

TEST(FormatText, IsWhatPrintfWrites) {
  EXPECT_EQ(FormatText("plain"), "plain");
  EXPECT_EQ(FormatText("%s", ""), "");
  EXPECT_EQ(FormatText("%s:%d %s", "name", 12, "text"), "name:12 text");
  EXPECT_EQ(FormatText("100%%"), "100%");
  EXPECT_EQ(FormatText("%d and %d", INT_MIN, INT_MAX), "-2147483648 and 2147483647");
}

TEST(FormatText, HasNoLongestText) {
  for (const std::size_t size : {1U, 255U, 256U, 1023U, 1024U, 4096U, 1'000'000U}) {
    const std::string word(size, 'w');
    EXPECT_EQ(FormatText("<%s>", word.c_str()), "<" + word + ">") << size;
  }
}

TEST(FormatText, KeepsPercentSignsOfItsArguments) {
  EXPECT_EQ(FormatText("%s", "%s%n%d"), "%s%n%d");
}

TEST(FormatText, KeepsBytesThatAreNoUTF8) {
  EXPECT_EQ(FormatText("%s", "\xFF\xFE\x80"), "\xFF\xFE\x80");
}

}  // namespace
}  // namespace KELP::Wifi
