#include "lab/page/page_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tests/support/temporary_folder.h"

namespace lab_test {
namespace {

namespace fs = std::filesystem;
using lab::page::RequirePageFile;
using lab::page::WritePageFile;
using ::testing::HasSubstr;

std::string Content(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t Entries(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

class PageFile : public ::testing::Test {
 protected:
  const fs::path& Folder() const { return folder_.Path(); }
  TemporaryFolder folder_;
};

TEST_F(PageFile, WritesAPageThatOnlyItsOwnerReads) {
  WritePageFile(Folder() / "page.html", "page");
  EXPECT_EQ(Content(Folder() / "page.html"), "page");
  EXPECT_EQ(fs::status(Folder() / "page.html").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(Entries(Folder()), 1U);
}

TEST_F(PageFile, ReplacesAnEarlierPage) {
  folder_.Write("page.html", "an earlier and longer page");
  WritePageFile(Folder() / "page.html", "page");
  EXPECT_EQ(Content(Folder() / "page.html"), "page");
}

TEST_F(PageFile, WritesToTheFileThatALinkNames) {
  folder_.Write("inner/page.html", "earlier");
  fs::create_symlink("inner/page.html", Folder() / "link.html");
  WritePageFile(Folder() / "link.html", "page");
  EXPECT_TRUE(fs::is_symlink(Folder() / "link.html"));
  EXPECT_EQ(Content(Folder() / "inner/page.html"), "page");
}

TEST_F(PageFile, TakesANameInThePresentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(Folder());
  WritePageFile("page.html", "page");
  fs::current_path(before);
  EXPECT_EQ(Content(Folder() / "page.html"), "page");
}

TEST_F(PageFile, RefusesWhatIsNoFile) {
  ASSERT_EQ(::mkfifo((Folder() / "pipe").c_str(), 0600), 0);
  for (const fs::path& name : {Folder() / "pipe", Folder(), fs::path("/dev/null"),
                               Folder() / "missing/page.html", Folder() / "missing/", fs::path()}) {
    EXPECT_THROW(RequirePageFile(name), std::runtime_error) << name;
    EXPECT_THROW(WritePageFile(name, "page"), std::runtime_error) << name;
  }
  EXPECT_TRUE(fs::is_fifo(Folder() / "pipe"));
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(PageFile, LeavesTheEarlierPageWhereItCannotBeWritten) {
  folder_.Write("page.html", "earlier");
  // What cannot be unlinked stands in the way of the new page.
  folder_.Write("page.html.new/something", "");
  try {
    WritePageFile(Folder() / "page.html", "page");
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("cannot write the page"));
    EXPECT_THAT(error.what(), HasSubstr("page.html: "));
  }
  EXPECT_EQ(Content(Folder() / "page.html"), "earlier");
}

}  // namespace
}  // namespace lab_test
