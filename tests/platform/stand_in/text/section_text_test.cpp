#include "platform/stand_in/text/section_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

using Entries = std::vector<std::pair<std::string, std::string>>;

Entries EntriesOf(const SectionText& text, std::string_view section) {
  Entries entries;
  text.ForEachEntry(section, [&](const Entry& entry) { entries.emplace_back(entry.key, entry.value); });
  return entries;
}

TEST(SectionText, NamesStandInFileOrder) {
  const SectionText text("[two]\n[one]\n[three]\n");
  EXPECT_THAT(text.Names(), ElementsAre("two", "one", "three"));
}

TEST(SectionText, EntriesBelongToTheSectionAboveThem) {
  const SectionText text("[one]\na=1\nb=2\n[two]\na=3\n");
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("a", "1"), Pair("b", "2")));
  EXPECT_THAT(EntriesOf(text, "two"), ElementsAre(Pair("a", "3")));
  EXPECT_THAT(EntriesOf(text, "three"), IsEmpty());
}

TEST(SectionText, EmptyTextHasNoSection) {
  EXPECT_THAT(SectionText("").Names(), IsEmpty());
  EXPECT_THAT(SectionText("\n\n").Names(), IsEmpty());
  EXPECT_THAT(SectionText("a=1\n").Names(), IsEmpty());
}

TEST(SectionText, EntriesBeforeTheFirstSectionBelongToNone) {
  const SectionText text("a=1\n[one]\nb=2\n");
  EXPECT_THAT(text.Names(), ElementsAre("one"));
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("b", "2")));
  EXPECT_THAT(EntriesOf(text, ""), IsEmpty());
}

TEST(SectionText, ANameThatComesAgainContinuesTheEarlierSectionAndIsListedOnce) {
  const SectionText text("[one]\na=1\n[two]\nb=2\n[one]\nc=3\n[two]\nd=4\n[one]\ne=5\n");
  EXPECT_THAT(text.Names(), ElementsAre("one", "two"));
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("a", "1"), Pair("c", "3"), Pair("e", "5")));
  EXPECT_THAT(EntriesOf(text, "two"), ElementsAre(Pair("b", "2"), Pair("d", "4")));
}

TEST(SectionText, ASectionRightBehindItselfContinues) {
  const SectionText text("[one]\n[one]\na=1\n[one]\n");
  EXPECT_THAT(text.Names(), ElementsAre("one"));
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("a", "1")));
}

TEST(SectionText, SectionWithoutEntriesIsListed) {
  const SectionText text("[one]\n[two]");
  EXPECT_THAT(text.Names(), ElementsAre("one", "two"));
  EXPECT_THAT(EntriesOf(text, "one"), IsEmpty());
  EXPECT_THAT(EntriesOf(text, "two"), IsEmpty());
}

TEST(SectionText, LastLineMayLackItsLineFeed) {
  EXPECT_THAT(EntriesOf(SectionText("[one]\na=1"), "one"), ElementsAre(Pair("a", "1")));
  EXPECT_THAT(SectionText("[one]").Names(), ElementsAre("one"));
}

TEST(SectionText, LinesThatStartWithASemicolonOrAHashAreComments) {
  const SectionText text(";[zero]\n#[zero]\n[one]\n;a=1\n#b=2\nc=3\n;[two]\n#[two]\nd=4\n");
  EXPECT_THAT(text.Names(), ElementsAre("one"));
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("c", "3"), Pair("d", "4")));
}

TEST(SectionText, CommentSignsElsewhereAreBytesLikeAnyOther) {
  const SectionText text("[one;1]\na=1;b\n b;=#\n[#two]\n ;c=d\n");
  EXPECT_THAT(text.Names(), ElementsAre("one;1", "#two"));
  EXPECT_THAT(EntriesOf(text, "one;1"), ElementsAre(Pair("a", "1;b"), Pair(" b;", "#")));
  EXPECT_THAT(EntriesOf(text, "#two"), ElementsAre(Pair(" ;c", "d")));
}

TEST(SectionText, NameIsWhatStandsBetweenFirstAndLastByte) {
  const SectionText text("[]\na=1\n[]]\nb=2\n[[]\nc=3\n[[x]]\nd=4\n[ x ]\ne=5\n[a=b]\nf=6\n[a]b]\ng=7\n");
  EXPECT_THAT(text.Names(), ElementsAre("", "]", "[", "[x]", " x ", "a=b", "a]b"));
  EXPECT_THAT(EntriesOf(text, ""), ElementsAre(Pair("a", "1")));
  EXPECT_THAT(EntriesOf(text, "]"), ElementsAre(Pair("b", "2")));
  EXPECT_THAT(EntriesOf(text, "["), ElementsAre(Pair("c", "3")));
  EXPECT_THAT(EntriesOf(text, "[x]"), ElementsAre(Pair("d", "4")));
  EXPECT_THAT(EntriesOf(text, " x "), ElementsAre(Pair("e", "5")));
  EXPECT_THAT(EntriesOf(text, "a=b"), ElementsAre(Pair("f", "6")));
  EXPECT_THAT(EntriesOf(text, "a]b"), ElementsAre(Pair("g", "7")));
}

TEST(SectionText, LineThatIsNotEnclosedInBracketsOpensNothing) {
  const SectionText text("[one]\n[two\n[three] \n [four]\n[five]\r\n]six[\n[\n]\n[seven];\nlast=1\n");
  EXPECT_THAT(text.Names(), ElementsAre("one"));
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("last", "1")));
}

TEST(SectionText, BracketedLineWithAnEqualsSignButNoClosingBracketIsAnEntry) {
  const SectionText text("[one]\n[a=b\n[a=b]\r\n");
  EXPECT_THAT(text.Names(), ElementsAre("one"));
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("[a", "b"), Pair("[a", "b]\r")));
}

TEST(SectionText, LinesWithoutEqualsSignAreNoEntries) {
  const SectionText text("[one]\nword\n\n \na=1\n");
  EXPECT_THAT(EntriesOf(text, "one"), ElementsAre(Pair("a", "1")));
}

TEST(SectionText, EntriesFollowTheKeyValueRules) {
  const SectionText text("[one]\n =x\n=nameless\nq=\"v\"\ne=\"\"\nl=\"\nc=\"v\"\r\nd=a=b\nd=again\n");
  EXPECT_THAT(EntriesOf(text, "one"),
              ElementsAre(Pair(" ", "x"), Pair("", "nameless"), Pair("q", "v"), Pair("e", ""),
                          Pair("l", "\""), Pair("c", "\"v\"\r"), Pair("d", "a=b"), Pair("d", "again")));
}

TEST(SectionText, NamesAreComparedWholeAndByCase) {
  const SectionText text("[Device]\na=1\n[device]\nb=2\n[device1]\nc=3\n");
  EXPECT_THAT(EntriesOf(text, "device"), ElementsAre(Pair("b", "2")));
  EXPECT_THAT(EntriesOf(text, "Device"), ElementsAre(Pair("a", "1")));
  EXPECT_THAT(EntriesOf(text, "devic"), IsEmpty());
}

TEST(SectionText, NamesEndAtTheirFirstNUL) {
  const SectionText text("[a\0b]\nk=1\n[a\0c]\nl=2\n"s);
  EXPECT_THAT(text.Names(), ElementsAre("a"));
  EXPECT_THAT(EntriesOf(text, "a"), ElementsAre(Pair("k", "1"), Pair("l", "2")));
}

TEST(SectionText, HundredThousandSectionsAreFoundEach) {
  std::string bytes;
  for (int i = 0; i < 100'000; ++i) {
    bytes += "[device" + std::to_string(i) + "]\nmac=" + std::to_string(i) + "\n";
  }
  const SectionText text(std::move(bytes));
  ASSERT_EQ(text.Names().size(), 100'000U);
  for (int i = 0; i < 100'000; i += 999) {
    const std::string number = std::to_string(i);
    ASSERT_THAT(EntriesOf(text, "device" + number), ElementsAre(Pair("mac", number)));
  }
}

}  // namespace
}  // namespace KELP::Wifi
