#include "platform/stand_in/text/entry_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace KELP::Wifi {
namespace {

using namespace std::string_view_literals;

struct Expected {
  std::string_view line;
  std::string_view key;
  std::string_view value;
};

void ExpectEntries(const std::vector<Expected>& cases) {
  for (const Expected& expected : cases) {
    const auto entry = ParseEntry(expected.line);
    ASSERT_TRUE(entry.has_value()) << expected.line;
    EXPECT_EQ(entry->key, expected.key) << expected.line;
    EXPECT_EQ(entry->value, expected.value) << expected.line;
  }
}

TEST(TakeLine, EndsAtLineFeedAndLeavesTheRest) {
  std::string_view rest = "one\ntwo\n\nlast";
  EXPECT_EQ(TakeLine(rest), "one");
  EXPECT_EQ(TakeLine(rest), "two");
  EXPECT_EQ(TakeLine(rest), "");
  EXPECT_EQ(TakeLine(rest), "last");
  EXPECT_TRUE(rest.empty());
}

TEST(TakeLine, OfAFinalLineFeedLeavesNothing) {
  std::string_view rest = "one\n";
  EXPECT_EQ(TakeLine(rest), "one");
  EXPECT_TRUE(rest.empty());
}

TEST(TakeLine, OfNothingIsEmpty) {
  std::string_view rest;
  EXPECT_EQ(TakeLine(rest), "");
  EXPECT_TRUE(rest.empty());
}

TEST(TakeLine, KeepsCarriageReturnsAndNULs) {
  std::string_view rest = "a\r\0b\r\nc"sv;
  EXPECT_EQ(TakeLine(rest), "a\r\0b\r"sv);
  EXPECT_EQ(rest, "c");
}

TEST(ParseEntry, KeyEndsAtTheFirstEqualsSign) {
  ExpectEntries({{"key=value", "key", "value"},
                 {"key=a=b", "key", "a=b"},
                 {"key==", "key", "="},
                 {"key=", "key", ""},
                 {"=value", "", "value"},
                 {"=", "", ""}});
}

TEST(ParseEntry, NothingIsTrimmed) {
  ExpectEntries({{" key =  value ", " key ", "  value "},
                 {"\tkey\t=\tvalue\t", "\tkey\t", "\tvalue\t"},
                 {"key=value\r", "key", "value\r"},
                 {"key\r=value", "key\r", "value"}});
}

TEST(ParseEntry, LineThatStartsWithAHashIsNone) {
  for (const std::string_view line : {"#key=value", "#", "#=", "# comment", "##key=value"}) {
    EXPECT_FALSE(ParseEntry(line)) << line;
  }
}

TEST(ParseEntry, HashAnywhereElseIsAByteLikeAnyOther) {
  ExpectEntries({{" #key=value", " #key", "value"},
                 {"k#y=value", "k#y", "value"},
                 {"key=#value", "key", "#value"},
                 {"key=value # text", "key", "value # text"}});
}

TEST(ParseEntry, SemicolonIsNoCommentHere) {
  ExpectEntries({{";key=value", ";key", "value"}});
}

TEST(ParseEntry, LineWithoutEqualsSignIsNone) {
  for (const std::string_view line : {"", "key", "key: value", "\r", "[section]", "\"quoted\""}) {
    EXPECT_FALSE(ParseEntry(line)) << line;
  }
}

TEST(ParseEntry, OnePairOfQuotesAroundTheWholeValueIsTakenOff) {
  ExpectEntries({{"key=\"value\"", "key", "value"},
                 {"key=\"\"", "key", ""},
                 {"key=\"\"\"\"", "key", "\"\""},
                 {"key=\"\"value\"\"", "key", "\"value\""},
                 {"key=\"\"\"", "key", "\""},
                 {"key=\"a\"b\"", "key", "a\"b"},
                 {"key=\" value \"", "key", " value "},
                 {"key=\"a=b\"", "key", "a=b"}});
}

TEST(ParseEntry, QuotesThatDoNotEncloseTheWholeValueStay) {
  ExpectEntries({{"key=\"", "key", "\""},
                 {"key=\"value", "key", "\"value"},
                 {"key=value\"", "key", "value\""},
                 {"key=\"value\"\r", "key", "\"value\"\r"},
                 {"key=\"value\" ", "key", "\"value\" "},
                 {"key= \"value\"", "key", " \"value\""},
                 {"key='value'", "key", "'value'"}});
}

TEST(ParseEntry, QuotesAroundTheKeyStay) {
  ExpectEntries({{"\"key\"=value", "\"key\"", "value"}, {"\"key=value\"", "\"key", "value\""}});
}

TEST(ParseEntry, EveryOtherByteStandsForItself) {
  for (int byte = 0; byte < 256; ++byte) {
    if (byte == '\n' || byte == '=' || byte == '#') continue;
    const std::string text{'<', static_cast<char>(byte), '>'};
    const std::string line = text + "=" + text;
    const auto entry = ParseEntry(line);
    ASSERT_TRUE(entry.has_value()) << byte;
    EXPECT_EQ(entry->key, text) << byte;
    EXPECT_EQ(entry->value, text) << byte;
  }
}

TEST(ParseEntry, BackslashesEscapeNothing) {
  ExpectEntries({{"key=a\\\"b", "key", "a\\\"b"}, {"key=\"a\\nb\"", "key", "a\\nb"}, {"k\\=v", "k\\", "v"}});
}

}  // namespace
}  // namespace KELP::Wifi
