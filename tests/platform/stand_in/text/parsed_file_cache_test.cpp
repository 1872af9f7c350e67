#include "platform/stand_in/text/parsed_file_cache.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <system_error>

#include "base/file_cache.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"

namespace KELP::Wifi {
namespace {

constexpr const char* kFile = "/etc/file";
constexpr const char* kOther = "/etc/other";

/// The bytes, and how often anything was made of some.
struct Counted {
  explicit Counted(std::string text) : bytes(std::move(text)) {
    ++made;
    if (bytes == "refused") throw std::invalid_argument("refused");
  }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  std::string bytes;
  static inline int made = 0;
};

class ParsedFileCacheTest : public ::testing::Test {
 protected:
  ParsedFileCacheTest() { Counted::made = 0; }

  static void Write(const std::string& path, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(file, 0);
    ASSERT_EQ(::write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(file);
  }
  std::string Get(const std::string& path = kFile) { return files_.Get(path).bytes; }

  /// What comes of asking for "/file".
  std::string Report() {
    try {
      return "read " + Get("/file");
    } catch (const std::system_error& error) {
      return error.what();
    }
  }
  void ExpectTriedAgain(const char* path) {
    EXPECT_THROW(Get(path), std::system_error) << path;
    ASSERT_EQ(std::remove(path), 0);
    Write(path, "one");
    EXPECT_EQ(Get(path), "one") << path;
  }

  lab::PrivateRoot device_;
  ParsedFileCache<Counted> files_;
};

TEST_F(ParsedFileCacheTest, OutsideOfAScopeAFileIsReadAtEveryCall) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  EXPECT_EQ(Get(), "one");
  EXPECT_EQ(Get(), "one");
  EXPECT_EQ(Counted::made, 2);
  Write(kFile, "two");
  EXPECT_EQ(Get(), "two");
  ASSERT_EQ(::unlink(kFile), 0);
  EXPECT_THROW(Get(), std::system_error);
  Write(kFile, "three");
  EXPECT_EQ(Get(), "three");
}

TEST_F(ParsedFileCacheTest, InAScopeEachFileIsReadOnce) {
  device_.Write(kFile, "one");
  device_.Write(kOther, "two");
  const lab::InRoot inside(device_);
  const FileCacheScope scope;
  ASSERT_EQ(Get(kFile), "one");
  ASSERT_EQ(Get(kOther), "two");
  Write(kFile, "three");
  ASSERT_EQ(::unlink(kOther), 0);
  EXPECT_EQ(Get(kFile), "one");
  EXPECT_EQ(Get(kOther), "two");
  EXPECT_EQ(Counted::made, 2);
}

TEST_F(ParsedFileCacheTest, NothingIsKeptFromBeforeAScopeNorBehindIt) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  ASSERT_EQ(Get(), "one");
  for (const char* bytes : {"two", "three"}) {
    Write(kFile, bytes);
    const FileCacheScope scope;
    EXPECT_EQ(Get(), bytes);
    Write(kFile, "unseen");
    EXPECT_EQ(Get(), bytes);
  }
  EXPECT_EQ(Get(), "unseen");
}

TEST_F(ParsedFileCacheTest, InvalidationForgetsEveryFileAndEveryMissingOne) {
  device_.Write(kFile, "one");
  device_.Write(kOther, "two");
  const lab::InRoot inside(device_);
  const FileCacheScope scope;
  ASSERT_EQ(Get(kFile), "one");
  ASSERT_EQ(Get(kOther), "two");
  ASSERT_THROW(Get("/file"), std::system_error);
  InvalidateFileCache();
  ASSERT_EQ(::rename(kFile, "/file"), 0);
  Write(kOther, "new");
  EXPECT_EQ(Get("/file"), "one");
  EXPECT_EQ(Get(kOther), "new");
  EXPECT_THROW(Get(kFile), std::system_error);
  Write(kFile, "back");
  EXPECT_THROW(Get(kFile), std::system_error);  // cached again
}

TEST_F(ParsedFileCacheTest, MissingFileIsMissingForTheScopeAndReportedAlike) {
  const lab::InRoot inside(device_);
  {
    const FileCacheScope scope;
    EXPECT_EQ(Report(), "cannot read /file: No such file or directory");
    Write("/file", "one");
    EXPECT_EQ(Report(), "cannot read /file: No such file or directory");
  }
  {
    const FileCacheScope scope;
    EXPECT_EQ(Report(), "read one");
  }
}

TEST_F(ParsedFileCacheTest, FileThatCannotBeReadIsTriedAgainInTheScope) {
  device_.MakeFifo("/etc/fifo");
  device_.Link("/etc/loop", "/etc/loop");
  device_.MakeDirectory("/etc/folder");
  const lab::InRoot inside(device_);
  const FileCacheScope scope;
  for (const char* path : {"/etc/fifo", "/etc/loop", "/etc/folder"}) ExpectTriedAgain(path);
}

TEST_F(ParsedFileCacheTest, TextThatIsRefusedIsNotKept) {
  device_.Write(kFile, "refused");
  const lab::InRoot inside(device_);
  const FileCacheScope scope;
  EXPECT_THROW(Get(), std::invalid_argument);
  EXPECT_THROW(Get(), std::invalid_argument);
  EXPECT_EQ(Counted::made, 2);
  Write(kFile, "one");
  EXPECT_EQ(Get(), "one");
}

}  // namespace
}  // namespace KELP::Wifi
