#include "lab/images/file_copy.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <filesystem>
#include <system_error>

#include "lab/images/tree.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::TemporaryFolder;
using ::testing::UnorderedElementsAre;

Descriptor Open(const fs::path& path, int flags = O_RDONLY | O_DIRECTORY) {
  return Descriptor(Checked(::open(path.c_str(), flags | O_CLOEXEC), "open", path.native()));
}

class FileCopy : public ::testing::Test {
 protected:
  void Copy() { CopyEntries(Open(from_.Path()).Get(), Open(to_.Path()).Get(), from_.Path()); }

  TemporaryFolder from_;
  TemporaryFolder to_;
};

TEST_F(FileCopy, CopiesEntriesWithTheirModes) {
  from_.Write("folder/file", std::string(200'000, 'x'));
  from_.Write("folder/strange", std::string("\0\n", 2));
  fs::create_symlink("/dangling", from_ / "link");
  ::mkfifo((from_ / "fifo").c_str(), 0600);
  ::chmod((from_ / "folder/file").c_str(), 04711);
  ::chmod((from_ / "folder").c_str(), 01500);
  ::chmod((from_ / "fifo").c_str(), 0622);
  const mode_t mask = ::umask(077);

  Copy();

  ::umask(mask);
  EXPECT_EQ(ReadTree(to_.Path()), ReadTree(from_.Path()));
  EXPECT_EQ(ReadTree(to_.Path()).size(), 5U);
}

TEST_F(FileCopy, LeavesSocketsOut) {
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (from_ / "socket").native().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(socket.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  Copy();
  EXPECT_TRUE(fs::is_empty(to_.Path()));
}

TEST_F(FileCopy, RefusesDevices) {
  if (::mknod((from_ / "null").c_str(), S_IFCHR | 0600, 0x103) != 0) GTEST_SKIP() << "needs root of the host";
  try {
    Copy();
    FAIL() << "nothing thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.what(),
              "copy the device node " + (from_ / "null").native() + ": Operation not supported");
  }
}

TEST_F(FileCopy, NeverReplacesAnything) {
  from_.Write("file", "new");
  to_.Write("file", "old");
  EXPECT_THROW(Copy(), std::system_error);
  EXPECT_EQ(lab_test::ReadFile(to_ / "file"), "old");
}

TEST_F(FileCopy, RemovesWhateverTheModes) {
  from_.Write("locked/inner/file", "x");
  fs::create_directory_symlink(to_.Path(), from_ / "link");
  to_.Write("kept", "behind a link");
  ::chmod((from_ / "locked/inner").c_str(), 0);
  ::chmod((from_ / "locked").c_str(), 0500);
  // Root would not notice the modes.
  const auto remove = [&] {
    RemoveEntries(Open(from_.Path()).Get(), from_.Path());
    return std::string("removed");
  };
  if (testing_support::MayBecomeOrdinaryUser()) {
    testing_support::Shell("chown -R nobody " + from_.Path().native());
    EXPECT_EQ(testing_support::AsOrdinaryUser(remove), "removed");
  } else {
    EXPECT_EQ(remove(), "removed");
  }
  EXPECT_TRUE(fs::is_empty(from_.Path()));
  EXPECT_TRUE(fs::exists(to_ / "kept"));
}

TEST_F(FileCopy, RemovesTreesThatAreTooDeepForAPath) {
  Descriptor folder = Open(from_.Path());
  const std::string name(200, 'd');
  for (int depth = 0; depth < 40; ++depth) {
    ASSERT_EQ(::mkdirat(folder.Get(), name.c_str(), 0755), 0);
    folder = OpenAt(folder.Get(), name, O_RDONLY | O_DIRECTORY, name);
  }
  RemoveEntries(Open(from_.Path()).Get(), from_.Path());
  EXPECT_TRUE(fs::is_empty(from_.Path()));
}

TEST_F(FileCopy, OpensNoLinkAndWaitsForNoFifo) {
  from_.Write("file", "x");
  fs::create_symlink("file", from_ / "link");
  ::mkfifo((from_ / "fifo").c_str(), 0600);
  const Descriptor folder = Open(from_.Path());
  EXPECT_THROW(OpenAt(folder.Get(), "link", O_RDONLY, "link"), std::system_error);
  EXPECT_TRUE(OpenAt(folder.Get(), "fifo", O_RDONLY, "fifo").IsOpen());
}

TEST_F(FileCopy, OpensBelowARootWithoutLeavingIt) {
  from_.Write("etc/file", "inside");
  fs::create_symlink("/etc/file", from_ / "absolute");
  fs::create_symlink("../../../../etc/file", from_ / "etc/climbing");
  const Descriptor root = Open(from_.Path());
  for (const char* path : {"/etc/file", "/absolute", "/etc/climbing", "/../etc/file"}) {
    const Descriptor file = OpenBelow(root.Get(), path, O_RDONLY);
    ASSERT_TRUE(file.IsOpen()) << path;
    EXPECT_EQ(ReadAll(file.Get(), path), "inside") << path;
  }
  EXPECT_FALSE(OpenBelow(root.Get(), "/etc/passwd", O_RDONLY).IsOpen());
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(FileCopy, ListsNamesThroughAnyDescriptor) {
  from_.Write("a", "");
  from_.Write(".b", "");
  const Descriptor folder = Open(from_.Path(), O_PATH | O_DIRECTORY);
  EXPECT_THAT(Names(folder.Get(), "x"), UnorderedElementsAre("a", ".b"));
  EXPECT_THAT(Names(folder.Get(), "x"), UnorderedElementsAre("a", ".b"));
  EXPECT_EQ(Names(Open(from_.Path()).Get(), "", 1).size(), 1U);
  EXPECT_EQ(Names(Open(from_.Path()).Get(), "", 0).size(), 0U);
}

TEST_F(FileCopy, TellsTheErrorsOfReadingAndWriting) {
  const Descriptor folder = Open(from_.Path());
  EXPECT_THROW(ReadAll(folder.Get(), "x"), std::system_error);
  EXPECT_THROW(WriteAll(folder.Get(), "text", "x"), std::system_error);
  EXPECT_THROW(LinkTarget(folder.Get(), "nothing", "x"), std::system_error);
}

}  // namespace
}  // namespace lab
