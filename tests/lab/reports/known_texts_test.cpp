#include "lab/reports/known_texts.h"

#include <gtest/gtest.h>

#include <string>

namespace lab_test {
namespace {

using lab::KnownTexts;

KnownTexts Of(std::initializer_list<const char*> texts) {
  KnownTexts known;
  for (const char* const text : texts) known.Add(text, "*");
  return known;
}

TEST(KnownTexts, ReplacesTheLongestWhereverItStands) {
  EXPECT_EQ(Of({"word", "password9"}).Replaced("a password9, a word"), "a *, a *");
  EXPECT_EQ(Of({"pass", "password", "passwords"}).Replaced("password pass passwords passwor"), "* * * *wor");
  EXPECT_EQ(Of({"abc", "abd"}).Replaced("abe abd abc ab"), "abe * * ab");
}

TEST(KnownTexts, FindsABeginningBehindOthersThatAreNone) {
  // Between "aa" and the text stand others that share more of it.
  EXPECT_EQ(Of({"aa", "aab", "aabb", "aabbx"}).Replaced("aabbcc"), "*cc");
  EXPECT_EQ(Of({"aa", "aabbca", "aabbcb"}).Replaced("aabbcc"), "*bbcc");
}

TEST(KnownTexts, TakesAnyBytes) {
  KnownTexts known;
  known.Add(std::string_view("\xE9\0\xFF", 3), "*");
  EXPECT_EQ(known.Replaced(std::string_view("a\xE9\0\xFF\xE9", 5)), "a*\xE9");
}

TEST(KnownTexts, HasLimits) {
  KnownTexts known;
  known.Add(std::string(KnownTexts::kLongest + 1, 'x'), "*");
  EXPECT_FALSE(known.AreIn(std::string(KnownTexts::kLongest + 1, 'x')));
  for (std::size_t number = 0; number <= KnownTexts::kMost; ++number) {
    known.Add("<" + std::to_string(number) + ">", "*");
  }
  EXPECT_EQ(known.Replaced("<0> <99999> <100000>"), "* * <100000>");
}

TEST(KnownTexts, KeepsTheFirstReplacementAndNoEmptyText) {
  KnownTexts known;
  known.Add("x", "1");
  known.Add("x", "2");
  known.Add("", "3");
  EXPECT_EQ(known.Replaced("xy"), "1y");
  EXPECT_TRUE(known.AreIn("yyx"));
  EXPECT_FALSE(known.AreIn("yy"));
  EXPECT_FALSE(known.AreIn(""));
}

}  // namespace
}  // namespace lab_test
