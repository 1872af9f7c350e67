#include "lab/images/tree_lookup.h"

#include <gtest/gtest.h>

namespace lab {
namespace {

const Entry kFile{Entry::Kind::File, 0644, "text"};
const Entry kFolder{Entry::Kind::Directory, 0755, ""};

Entry LinkTo(const std::string& target) {
  return {Entry::Kind::Link, 0777, target};
}

TEST(FindFile, FindsRegularFilesOnly) {
  const Tree tree{{"/etc", kFolder}, {"/etc/file", kFile}, {"/etc/fifo", {Entry::Kind::Other, 0644, ""}}};
  EXPECT_EQ(FindFile(tree, "/etc/file"), &tree.at("/etc/file"));
  EXPECT_EQ(FindFile(tree, "/etc"), nullptr);
  EXPECT_EQ(FindFile(tree, "/etc/fifo"), nullptr);
  EXPECT_EQ(FindFile(tree, "/etc/none"), nullptr);
  EXPECT_EQ(FindFile(tree, "/none/file"), nullptr);
}

TEST(FindFile, NeedsNoEntryOfTheFoldersOnTheWay) {
  const Tree tree{{"/etc/file", kFile}};
  EXPECT_EQ(FindFile(tree, "/etc/file"), &tree.at("/etc/file"));
}

TEST(FindFile, FollowsLinksOnTheWayAndAtTheEnd) {
  const Tree tree{{"/data", kFolder},
                  {"/data/wifi", kFolder},
                  {"/data/wifi/file", kFile},
                  {"/etc", kFolder},
                  {"/etc/absolute", LinkTo("/data/wifi")},
                  {"/etc/relative", LinkTo("../data/wifi/file")},
                  {"/etc/twice", LinkTo("absolute/file")},
                  {"/etc/out", LinkTo("../../../data/wifi/file")}};
  const Entry* const file = &tree.at("/data/wifi/file");
  EXPECT_EQ(FindFile(tree, "/etc/absolute/file"), file);
  EXPECT_EQ(FindFile(tree, "/etc/relative"), file);
  EXPECT_EQ(FindFile(tree, "/etc/twice"), file);
  EXPECT_EQ(FindFile(tree, "/etc/out"), file);
}

TEST(FindFile, EndsWithLinksThatLeadNowhereOrInCircles) {
  const Tree tree{{"/a", LinkTo("/b")}, {"/b", LinkTo("/a")}, {"/c", LinkTo("/none")}};
  EXPECT_EQ(FindFile(tree, "/a"), nullptr);
  EXPECT_EQ(FindFile(tree, "/c"), nullptr);
}

}  // namespace
}  // namespace lab
