#include "lab/household/legacy_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/sdk_utils.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ParseKeyValueText, GivesEntriesWithTheirLines) {
  EXPECT_THAT(ParseKeyValueText("# a=1\n\na=1\nno entry\n b = \"2\" \nc=\"x=y\"\nd=\r\ne=\""),
              ElementsAre(LegacyEntry{"", "a", "1", 2}, LegacyEntry{"", " b ", " \"2\" ", 4},
                          LegacyEntry{"", "c", "x=y", 5}, LegacyEntry{"", "d", "\r", 6},
                          LegacyEntry{"", "e", "\"", 7}));
  EXPECT_THAT(ParseKeyValueText(""), IsEmpty());
}

TEST(ParseKeyValueText, ReadsAsTheDeviceDoes) {
  for (const std::string text : {"a=1\na=2", "a=\"\"", "#a=1\na=\"2", "a\n=a=1", "=x\na==", "\na=1\r\n"}) {
    const lab_test::TemporaryFolder folder;
    folder.Write("file", text);
    const std::string path = folder.Path() / "file";
    const auto here = FindValue(ParseKeyValueText(text), "a");
    if (here) {
      EXPECT_EQ(KELP::Wifi::Util::SDKUtils::FileGetKeyValue(path, "a"), *here) << text;
    } else {
      EXPECT_THROW(KELP::Wifi::Util::SDKUtils::FileGetKeyValue(path, "a"), std::runtime_error) << text;
    }
  }
}

TEST(ParseSectionText, GivesEntriesWithTheirSections) {
  EXPECT_THAT(ParseSectionText("x=0\n; [no]\n[one]\n;a=1\na=1\n[two]\na=2\n[one]\nb=3\n"),
              ElementsAre(LegacyEntry{"one", "a", "1", 4}, LegacyEntry{"two", "a", "2", 6},
                          LegacyEntry{"one", "b", "3", 8}));
}

TEST(FindValue, TakesTheFirstOfTheSection) {
  const auto entries = ParseSectionText("[one]\na=1\na=2\n[two]\na=3\n");
  EXPECT_EQ(FindValue(entries, "a", "one"), "1");
  EXPECT_EQ(FindValue(entries, "a", "two"), "3");
  EXPECT_EQ(FindValue(entries, "a"), std::nullopt);
}

TEST(WithoutEntry, LeavesAllOtherLines) {
  const std::string text = "# one\na=1\nb=2\nlast";
  const auto entries = ParseKeyValueText(text);
  EXPECT_EQ(WithoutEntry(text, entries[0]), "# one\nb=2\nlast\n");
  EXPECT_EQ(WithValue(text, entries[1], "3"), "# one\na=1\nb=3\nlast\n");
}

}  // namespace
}  // namespace lab
