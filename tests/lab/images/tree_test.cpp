#include "lab/images/tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>
#include <system_error>

#include "lab/images/private_root.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using lab_test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Entry File(const std::string& content, mode_t mode = 0644) {
  return {Entry::Kind::File, mode, content};
}
Entry Directory() {
  return {Entry::Kind::Directory, 0755, ""};
}
Entry SymbolicLink(const std::string& target) {
  return {Entry::Kind::Link, 0777, target};
}

TEST(ReadTree, GivesEveryEntryByItsPathOnTheDevice) {
  PrivateRoot root;
  root.Write("/usr/kelp/etc/info.conf", "a=1\n", 0600);
  root.MakeDirectory("/usr/kelp/empty", 01775);
  root.Link("/usr/kelp/link", "/usr/kelp/etc/info.conf");
  root.MakeFifo("/usr/fifo", 0640);

  Tree tree = ReadTree(root.Path() / "usr");

  EXPECT_EQ(tree, (Tree{{"/kelp", Directory()},
                        {"/kelp/etc", Directory()},
                        {"/kelp/etc/info.conf", File("a=1\n", 0600)},
                        {"/kelp/empty", {Entry::Kind::Directory, 01775, ""}},
                        {"/kelp/link", SymbolicLink("/usr/kelp/etc/info.conf")},
                        {"/fifo", {Entry::Kind::Other, 0640, ""}}}));
}

TEST(ReadTree, KeepsAllBytesOfContentAndNames) {
  const TemporaryFolder folder;
  const std::string bytes("\0\xff\r\n", 4);
  folder.Write("na\nme\xe9", bytes);
  EXPECT_EQ(ReadTree(folder.Path()), (Tree{{"/na\nme\xe9", File(bytes)}}));
}

TEST(ReadTree, ReadsFilesOfAnySize) {
  const TemporaryFolder folder;
  folder.Write("empty", "");
  folder.Write("large", std::string(1'000'000, 'x'));
  EXPECT_EQ(ReadTree(folder.Path()),
            (Tree{{"/empty", File("")}, {"/large", File(std::string(1'000'000, 'x'))}}));
}

TEST(ReadTree, FollowsNoLink) {
  const TemporaryFolder folder;
  std::filesystem::create_directory_symlink("/", folder / "host");
  std::filesystem::create_symlink("loop", folder / "loop");
  EXPECT_EQ(ReadTree(folder.Path()), (Tree{{"/host", SymbolicLink("/")}, {"/loop", SymbolicLink("loop")}}));
}

TEST(ReadTree, NamesTheFolderThatIsMissing) {
  try {
    ReadTree("/nowhere/at/all");
    FAIL() << "nothing thrown";
  } catch (const std::system_error& error) {
    EXPECT_STREQ(error.what(), "open /nowhere/at/all: No such file or directory");
  }
}

TEST(ReadEntry, LeavesOutWhatIsBelow) {
  PrivateRoot root;
  root.Write("/etc/file", "text");
  EXPECT_EQ(ReadEntry(root.Directory(), "etc", "/etc"), Directory());
}

TEST(Entry, PrintsForAPerson) {
  std::ostringstream out;
  out << File("a \"b\"", 0600) << ", " << SymbolicLink("/etc");
  EXPECT_EQ(out.str(), "file 0600 \"a \\\"b\\\"\", link 0777 \"/etc\"");
}

TEST(Diff, IsEmptyForEqualTrees) {
  const Tree tree{{"/etc", Directory()}, {"/etc/a", File("1")}};
  EXPECT_EQ(Diff(tree, tree), TreeDiff{});
}

TEST(Diff, TellsNewChangedAndMissingPaths) {
  const TreeDiff diff =
      Diff({{"/content", File("1")}, {"/mode", File("2")}, {"/kind", File("3")}, {"/gone", File("4")}},
           {{"/content", File("one")},
            {"/mode", File("2", 0600)},
            {"/kind", Directory()},
            {"/new", File("5")},
            {"/folder", Directory()}});
  EXPECT_THAT(diff.written, ElementsAre("/folder", "/new"));
  EXPECT_THAT(diff.changed, ElementsAre("/content", "/kind", "/mode"));
  EXPECT_THAT(diff.removed, ElementsAre("/gone"));
  EXPECT_THAT(diff.moved, IsEmpty());
}

TEST(Diff, TellsMovedFilesAndLinks) {
  const TreeDiff diff = Diff({{"/a", File("1")}, {"/link", SymbolicLink("/x")}, {"/old-name", File("2")}},
                             {{"/archive", Directory()},
                              {"/archive/a", File("1", 0600)},
                              {"/archive/link", SymbolicLink("/x")},
                              {"/new-name", File("2")}});
  EXPECT_THAT(diff.moved,
              ElementsAre(TreeDiff::Move{"/a", "/archive/a"}, TreeDiff::Move{"/link", "/archive/link"},
                          TreeDiff::Move{"/old-name", "/new-name"}));
  EXPECT_THAT(diff.written, ElementsAre("/archive"));
  EXPECT_THAT(diff.removed, IsEmpty());
}

TEST(Diff, PairsEqualContentByName) {
  const TreeDiff diff = Diff({{"/a", File("same")}, {"/b", File("same")}},
                             {{"/archive/b", File("same")}, {"/archive/c", File("same")}});
  EXPECT_THAT(diff.moved,
              ElementsAre(TreeDiff::Move{"/a", "/archive/c"}, TreeDiff::Move{"/b", "/archive/b"}));
}

TEST(Diff, PairsEmptyFilesOnlyByName) {
  const TreeDiff diff =
      Diff({{"/a", File("")}, {"/b", File("")}}, {{"/archive/a", File("")}, {"/other", File("")}});
  EXPECT_THAT(diff.moved, ElementsAre(TreeDiff::Move{"/a", "/archive/a"}));
  EXPECT_THAT(diff.removed, ElementsAre("/b"));
  EXPECT_THAT(diff.written, ElementsAre("/other"));
}

TEST(Diff, DoesNotTakeACopyForAMove) {
  const TreeDiff diff = Diff({{"/a", File("1")}}, {{"/a", File("1")}, {"/copy", File("1")}});
  EXPECT_THAT(diff.written, ElementsAre("/copy"));
  EXPECT_THAT(diff.moved, IsEmpty());
}

TEST(Diff, NeverPairsDirectoriesOrOtherKinds) {
  const TreeDiff diff = Diff({{"/x/folder", Directory()}, {"/text", File("/t")}},
                             {{"/y/folder", Directory()}, {"/link", SymbolicLink("/t")}});
  EXPECT_THAT(diff.moved, IsEmpty());
  EXPECT_THAT(diff.written, ElementsAre("/link", "/y/folder"));
  EXPECT_THAT(diff.removed, ElementsAre("/text", "/x/folder"));
}

}  // namespace
}  // namespace lab
