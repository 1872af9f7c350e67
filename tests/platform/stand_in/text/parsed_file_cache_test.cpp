#include "platform/stand_in/text/parsed_file_cache.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

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
  /// Until the file system's clock has ticked for certain, so that what was written is remembered when it is
  /// read.
  static void Settle() { std::this_thread::sleep_for(std::chrono::milliseconds(50)); }

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

TEST_F(ParsedFileCacheTest, UnchangedFileIsReadOnceForAThousandReads) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(Get(), "one");
  EXPECT_EQ(Counted::made, 1);
}

TEST_F(ParsedFileCacheTest, EachFileIsRememberedForItself) {
  device_.Write(kFile, "one");
  device_.Write(kOther, "two");
  const lab::InRoot inside(device_);
  Settle();
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(Get(kFile), "one");
    ASSERT_EQ(Get(kOther), "two");
  }
  EXPECT_EQ(Counted::made, 2);

  Write(kOther, "new");
  Settle();
  EXPECT_EQ(Get(kFile), "one");
  EXPECT_EQ(Get(kOther), "new");
  EXPECT_EQ(Counted::made, 3);
}

TEST_F(ParsedFileCacheTest, FileThatWasReadWhileItsStampWasFreshIsRememberedLater) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Write(kFile, "two");
  EXPECT_EQ(Get(), "two");
  Settle();
  EXPECT_EQ(Get(), "two");
  const int made = Counted::made;
  for (int i = 0; i < 100; ++i) EXPECT_EQ(Get(), "two");
  EXPECT_EQ(Counted::made, made);
}

TEST_F(ParsedFileCacheTest, ChangeOfEqualSizeBetweenTwoReadsIsSeenEveryTime) {
  device_.Write(kFile, "00000000");
  const lab::InRoot inside(device_);
  for (int i = 0; i < 500; ++i) {  // each truncation costs a flush on some file systems
    std::array<char, 9> bytes{};
    std::snprintf(bytes.data(), bytes.size(), "%08d", i);
    Write(kFile, bytes.data());
    ASSERT_EQ(Get(), bytes.data());
  }
}

TEST_F(ParsedFileCacheTest, ChangeInPlaceThroughAnOpenDescriptorIsSeenEveryTime) {
  device_.Write(kFile, "00000000");
  const lab::InRoot inside(device_);
  const int file = ::open(kFile, O_WRONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  for (int i = 0; i < 20'000; ++i) {
    std::array<char, 9> bytes{};
    std::snprintf(bytes.data(), bytes.size(), "%08d", i);
    ASSERT_EQ(::pwrite(file, bytes.data(), 8, 0), 8);
    ASSERT_EQ(Get(), bytes.data());
    ASSERT_EQ(Get(), bytes.data());
  }
  ::close(file);
}

TEST_F(ParsedFileCacheTest, ChangeRightAfterTheClockHasTickedIsSeen) {
  device_.Write(kFile, "0000");
  const lab::InRoot inside(device_);
  const int file = ::open(kFile, O_WRONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  // Reads and writes at every distance around a tick: the file settles in between, and changes again.
  for (int i = 0; i < 200; ++i) {
    std::array<char, 5> bytes{};
    std::snprintf(bytes.data(), bytes.size(), "%04d", i);
    ASSERT_EQ(::pwrite(file, bytes.data(), 4, 0), 4);
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(i * 50);
    do {
      ASSERT_EQ(Get(), bytes.data());
    } while (std::chrono::steady_clock::now() < end);
  }
  ::close(file);
}

TEST_F(ParsedFileCacheTest, ReplacementByRenameIsSeen) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  Write(kOther, "two");
  ASSERT_EQ(::rename(kOther, kFile), 0);
  EXPECT_EQ(Get(), "two");
}

TEST_F(ParsedFileCacheTest, ReplacementByAnOlderFileOfEqualSizeIsSeen) {
  device_.Write(kFile, "one");
  device_.Write(kOther, "two");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  ASSERT_EQ(::rename(kOther, kFile), 0);
  EXPECT_EQ(Get(), "two");
}

TEST_F(ParsedFileCacheTest, ChangeUnderARestoredModificationTimeIsSeen) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  struct stat status {};
  ASSERT_EQ(::stat(kFile, &status), 0);
  Write(kFile, "two");
  const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
  ASSERT_EQ(::utimensat(AT_FDCWD, kFile, times.data(), 0), 0);
  EXPECT_EQ(Get(), "two");
}

TEST_F(ParsedFileCacheTest, TruncationIsSeen) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  ASSERT_EQ(::truncate(kFile, 0), 0);
  EXPECT_EQ(Get(), "");
}

TEST_F(ParsedFileCacheTest, RemovalIsSeenAndSoIsTheReturn) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  ASSERT_EQ(::unlink(kFile), 0);
  EXPECT_THROW(Get(), std::system_error);
  EXPECT_THROW(Get(), std::system_error);
  Write(kFile, "two");
  EXPECT_EQ(Get(), "two");
}

TEST_F(ParsedFileCacheTest, FileThatBecomesADirectoryIsSeen) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  ASSERT_EQ(::unlink(kFile), 0);
  ASSERT_EQ(::mkdir(kFile, 0755), 0);
  EXPECT_THROW(Get(), std::system_error);
}

TEST_F(ParsedFileCacheTest, FileThatBecomesAFIFOIsSeen) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  ASSERT_EQ(::unlink(kFile), 0);
  ASSERT_EQ(::mkfifo(kFile, 0644), 0);
  EXPECT_THROW(Get(), std::system_error);
}

TEST_F(ParsedFileCacheTest, LinkThatPointsElsewhereNowIsSeen) {
  device_.Write(kOther, "one");
  device_.Write("/etc/third", "two");
  device_.Link(kFile, kOther);
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  ASSERT_EQ(::unlink(kFile), 0);
  ASSERT_EQ(::symlink("/etc/third", kFile), 0);
  EXPECT_EQ(Get(), "two");
}

TEST_F(ParsedFileCacheTest, ChangeBehindALinkIsSeen) {
  device_.Write(kOther, "one");
  device_.Link(kFile, kOther);
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  Write(kOther, "two");
  EXPECT_EQ(Get(), "two");
}

TEST_F(ParsedFileCacheTest, FileOfAnotherRootUnderTheSamePathIsAnotherFile) {
  device_.Write(kFile, "one");
  lab::PrivateRoot second;
  second.Write(kFile, "two");
  Settle();
  for (int i = 0; i < 10; ++i) {
    {
      const lab::InRoot inside(device_);
      ASSERT_EQ(Get(), "one");
    }
    const lab::InRoot inside(second);
    ASSERT_EQ(Get(), "two");
  }
}

TEST_F(ParsedFileCacheTest, MissingFileIsNotRememberedAsMissing) {
  const lab::InRoot inside(device_);
  EXPECT_THROW(Get("/file"), std::system_error);
  Write("/file", "one");
  EXPECT_EQ(Get("/file"), "one");
}

// Within a run

TEST_F(ParsedFileCacheTest, FileThatChangesInARunIsTrusted) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  const FileCacheScope run;
  ASSERT_EQ(Get(), "one");
  Write(kFile, "three");
  EXPECT_EQ(Get(), "one");
  ASSERT_EQ(::unlink(kFile), 0);
  EXPECT_EQ(Get(), "one");
  EXPECT_EQ(Counted::made, 1);
}

TEST_F(ParsedFileCacheTest, FileThatWasReadBeforeTheRunIsLookedAtOnceMore) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  Write(kFile, "three");
  const FileCacheScope run;
  EXPECT_EQ(Get(), "three");
  Write(kFile, "eleven");
  EXPECT_EQ(Get(), "three");
}

TEST_F(ParsedFileCacheTest, UnchangedFileThatWasReadBeforeTheRunIsTrustedOnceItWasLookedAt) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  Settle();
  ASSERT_EQ(Get(), "one");
  const FileCacheScope run;
  EXPECT_EQ(Get(), "one");
  Write(kFile, "three");
  EXPECT_EQ(Get(), "one");
  EXPECT_EQ(Counted::made, 1);
}

TEST_F(ParsedFileCacheTest, FileIsReadAnewInTheNextRunAndBehindTheLast) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  {
    const FileCacheScope run;
    ASSERT_EQ(Get(), "one");
    Write(kFile, "three");
  }
  {
    const FileCacheScope run;
    EXPECT_EQ(Get(), "three");
    Write(kFile, "eleven");
    EXPECT_EQ(Get(), "three");
  }
  EXPECT_EQ(Get(), "eleven");
}

TEST_F(ParsedFileCacheTest, MissingFileIsMissingForTheRunAndReportedAlike) {
  const lab::InRoot inside(device_);
  {
    const FileCacheScope run;
    EXPECT_EQ(Report(), "cannot read /file: No such file or directory");
    Write("/file", "one");
    EXPECT_EQ(Report(), "cannot read /file: No such file or directory");
  }
  {
    const FileCacheScope run;
    EXPECT_EQ(Report(), "read one");
  }
}

TEST_F(ParsedFileCacheTest, FileThatCannotBeReadIsTriedAgainInTheRun) {
  device_.MakeFifo("/etc/fifo");
  device_.Link("/etc/loop", "/etc/loop");
  device_.MakeDirectory("/etc/folder");
  const lab::InRoot inside(device_);
  const FileCacheScope run;
  for (const char* path : {"/etc/fifo", "/etc/loop", "/etc/folder"}) ExpectTriedAgain(path);
}

TEST_F(ParsedFileCacheTest, WhatTheProgramChangesIsNotTrusted) {
  device_.Write(kFile, "one");
  const lab::InRoot inside(device_);
  const FileCacheScope run;
  ASSERT_EQ(Get(), "one");
  EXPECT_THROW(Get("/file"), std::system_error);
  InvalidateFileCache();
  ASSERT_EQ(::rename(kFile, "/file"), 0);
  EXPECT_EQ(Get("/file"), "one");
  EXPECT_THROW(Get(), std::system_error);
  Write(kFile, "two");
  EXPECT_THROW(Get(), std::system_error);  // trusted again: nobody said that it changes
}

TEST_F(ParsedFileCacheTest, TextThatIsRefusedIsNotRemembered) {
  device_.Write(kFile, "refused");
  const lab::InRoot inside(device_);
  Settle();
  EXPECT_THROW(Get(), std::invalid_argument);
  EXPECT_THROW(Get(), std::invalid_argument);
  EXPECT_EQ(Counted::made, 2);
  Write(kFile, "one");
  EXPECT_EQ(Get(), "one");
}

}  // namespace
}  // namespace KELP::Wifi
