#include "lab/text/utf8.h"

#include <gtest/gtest.h>

namespace lab {
namespace {

TEST(Printable, EscapesControlCharactersButTabAndLineFeed) {
  EXPECT_EQ(Printable(std::string("a\tb\n\0\x1b\x7f\\ \r", 10)), "a\tb\n\\x00\\x1b\\x7f\\ \\x0d");
  EXPECT_EQ(PrintableLine("a\tb\n"), "a\\x09b\\x0a");
}

TEST(Printable, KeepsTextsOfAllWritings) {
  for (const char* text : {"é", "鹿野の家", "Маяк", "😀", "שלום", "~"}) EXPECT_EQ(Printable(text), text);
}

TEST(Printable, EscapesWhatTurnsOrHidesTheTextBesideIt) {
  EXPECT_EQ(Printable("a\u202egnp"), "a\\u202egnp");  // right-to-left override
  EXPECT_EQ(Printable("\u2066x\u2069"), "\\u2066x\\u2069");
  EXPECT_EQ(Printable("\u200fx\u200b"), "\\u200fx\\u200b");
  EXPECT_EQ(Printable("\ufeff"), "\\ufeff");
  EXPECT_EQ(Printable("\u0085\u009b"), "\\u0085\\u009b");  // C1 controls
  EXPECT_EQ(Printable("\U000e0041"), "\\ue0041");
}

TEST(Printable, EscapesBytesThatAreNoUTF8) {
  EXPECT_EQ(Printable("caf\xe9"), "caf\\xe9");
  EXPECT_EQ(Printable("\xe9t\xe9"), "\\xe9t\\xe9");
  EXPECT_EQ(Printable("\x93\x91\x8d\x8e 5G"), "\\x93\\x91\\x8d\\x8e 5G");
  EXPECT_EQ(Printable("\xc3"), "\\xc3");
  EXPECT_EQ(Printable("\xc0\xaf"), "\\xc0\\xaf");                    // overlong
  EXPECT_EQ(Printable("\xe0\x80\xaf"), "\\xe0\\x80\\xaf");           // overlong
  EXPECT_EQ(Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // surrogate
  EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // beyond the last character
}

TEST(ValidUtf8, EscapesNothingElse) {
  EXPECT_EQ(ValidUtf8("a\"\t\x1b\x7f \u202e さくら \xF0\x9F\x8F\xA0"),
            "a\"\t\x1b\x7f \u202e さくら \xF0\x9F\x8F\xA0");
  EXPECT_EQ(ValidUtf8(std::string("\0\xFF", 2)), std::string("\0\\xff", 5));
  EXPECT_EQ(ValidUtf8("\xE3\x81!"), "\\xe3\\x81!");
}

}  // namespace
}  // namespace lab
