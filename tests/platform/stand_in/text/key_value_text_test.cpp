#include "platform/stand_in/text/key_value_text.h"

#include <gtest/gtest.h>

#include <string>

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Value = std::optional<std::string_view>;

TEST(KeyValueText, FindsEachKeyWhateverTheOrder) {
  const KeyValueText text("one=1\ntwo=2\nthree=3\n");
  EXPECT_EQ(text.Find("three"), Value("3"));
  EXPECT_EQ(text.Find("one"), Value("1"));
  EXPECT_EQ(text.Find("two"), Value("2"));
}

TEST(KeyValueText, LastLineMayLackItsLineFeed) {
  const KeyValueText text("one=1\ntwo=2");
  EXPECT_EQ(text.Find("two"), Value("2"));
}

TEST(KeyValueText, EmptyTextAndEmptyLinesHoldNothing) {
  EXPECT_EQ(KeyValueText("").Find("key"), std::nullopt);
  EXPECT_EQ(KeyValueText("").Find(""), std::nullopt);
  EXPECT_EQ(KeyValueText("\n\n\n").Find(""), std::nullopt);
  EXPECT_EQ(KeyValueText("\n\nkey=value\n\n").Find("key"), Value("value"));
}

TEST(KeyValueText, KeysAreComparedWhole) {
  const KeyValueText text("guest_ssid=g\nssid_old=o\nssid=s\nssi=x\n");
  EXPECT_EQ(text.Find("ssid"), Value("s"));
  EXPECT_EQ(text.Find("ssi"), Value("x"));
  EXPECT_EQ(text.Find("ss"), std::nullopt);
  EXPECT_EQ(text.Find("id"), std::nullopt);
  EXPECT_EQ(text.Find("ssid_older"), std::nullopt);
}

TEST(KeyValueText, KeysAreCaseSensitiveAndUntrimmed) {
  const KeyValueText text("SSID=upper\n ssid=blank before\nssid =blank behind\n");
  EXPECT_EQ(text.Find("ssid"), std::nullopt);
  EXPECT_EQ(text.Find("SSID"), Value("upper"));
  EXPECT_EQ(text.Find(" ssid"), Value("blank before"));
  EXPECT_EQ(text.Find("ssid "), Value("blank behind"));
}

TEST(KeyValueText, OfTwoEntriesWithOneKeyTheFirstCounts) {
  const KeyValueText text("key=first\nother=x\nkey=second\n");
  EXPECT_EQ(text.Find("key"), Value("first"));
}

TEST(KeyValueText, AnEmptyFirstEntryStillCountsBeforeTheSecond) {
  const KeyValueText text("key=\nkey=second\n");
  EXPECT_EQ(text.Find("key"), Value(""));
}

TEST(KeyValueText, CommentsAreNoEntries) {
  const KeyValueText text("#key=comment\nkey=value\n");
  EXPECT_EQ(text.Find("key"), Value("value"));
  EXPECT_EQ(text.Find("#key"), std::nullopt);
}

TEST(KeyValueText, LineWithoutEqualsSignHidesNoLaterEntry) {
  const KeyValueText text("key\nkey=value\n");
  EXPECT_EQ(text.Find("key"), Value("value"));
}

TEST(KeyValueText, AThousandKeysAreAllFound) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes += "key" + std::to_string(i) + "=" + std::to_string(7 * i) + "\n";
  const KeyValueText text(bytes);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(text.Find("key" + std::to_string(i)), Value(std::to_string(7 * i)));
  }
  EXPECT_EQ(text.Find("key1000"), std::nullopt);
}

TEST(KeyValueText, EmptyKeyIsAKey) {
  EXPECT_EQ(KeyValueText("a=1\n=nameless\n").Find(""), Value("nameless"));
  EXPECT_EQ(KeyValueText("a=1\n").Find(""), std::nullopt);
}

TEST(KeyValueText, NoEntryHasAKeyWithAnEqualsSign) {
  const KeyValueText text("a=b=c\n");
  EXPECT_EQ(text.Find("a=b"), std::nullopt);
  EXPECT_EQ(text.Find("a="), std::nullopt);
  EXPECT_EQ(text.Find("="), std::nullopt);
  EXPECT_EQ(text.Find("a"), Value("b=c"));
}

TEST(KeyValueText, NoEntryHasAKeyWithALineFeed) {
  const KeyValueText text("a=1\nb=2\n\nc=3\n");
  EXPECT_EQ(text.Find("a=1\nb"), std::nullopt);
  EXPECT_EQ(text.Find("\nc"), std::nullopt);
  EXPECT_EQ(text.Find("\n"), std::nullopt);
  EXPECT_EQ(KeyValueText("word\nb=2\n").Find("word\nb"), std::nullopt);
}

TEST(KeyValueText, KeyLongerThanTheTextIsNotFound) {
  EXPECT_EQ(KeyValueText("a=1").Find(std::string(1000, 'a')), std::nullopt);
  EXPECT_EQ(KeyValueText("a=1").Find("a=1"), std::nullopt);
}

TEST(KeyValueText, CarriageReturnBelongsToTheValue) {
  const KeyValueText text("key=yes\r\nquoted=\"yes\"\r\n");
  EXPECT_EQ(text.Find("key"), Value("yes\r"));
  EXPECT_EQ(text.Find("quoted"), Value("\"yes\"\r"));
}

TEST(KeyValueText, ALoneCarriageReturnEndsNoLine) {
  const KeyValueText text("a=1\rb=2\n");
  EXPECT_EQ(text.Find("a"), Value("1\rb=2"));
  EXPECT_EQ(text.Find("b"), std::nullopt);
}

TEST(KeyValueText, QuotedEmptyValueIsEmptyAndALoneQuoteStays) {
  const KeyValueText text("empty=\"\"\nlone=\"\n");
  EXPECT_EQ(text.Find("empty"), Value(""));
  EXPECT_EQ(text.Find("lone"), Value("\""));
}

TEST(KeyValueText, NULsAreBytesOfKeyAndValue) {
  const KeyValueText text("a\0b=c\0d\nnext=1\n"s);
  EXPECT_EQ(text.Find("a\0b"sv), Value("c\0d"sv));
  EXPECT_EQ(text.Find("a"), std::nullopt);
  EXPECT_EQ(text.Find("next"), Value("1"));
}

TEST(KeyValueText, BytesAbove0x7FAreBytesLikeAnyOther) {
  const KeyValueText text("n\xE4me=\xFF\xFE\n");
  EXPECT_EQ(text.Find("n\xE4me"), Value("\xFF\xFE"));
}

TEST(KeyValueText, ByteOrderMarkIsPartOfTheFirstKey) {
  const KeyValueText text("\xEF\xBB\xBFkey=value\n");
  EXPECT_EQ(text.Find("key"), std::nullopt);
  EXPECT_EQ(text.Find("\xEF\xBB\xBFkey"), Value("value"));
}

}  // namespace
}  // namespace KELP::Wifi
