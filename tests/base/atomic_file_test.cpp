#include "base/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <system_error>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/small_disk.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;

constexpr const char* kFolder = "/usr/kelp/etc/wifi";
constexpr const char* kTarget = "/usr/kelp/etc/wifi/global.json";
constexpr const char* kTemporary = "/usr/kelp/etc/wifi/global.json.new";

class WriteFileAtomicallyTest : public ::testing::Test {
 protected:
  WriteFileAtomicallyTest() { device_.MakeDirectory(kFolder); }

  void Replace(std::string_view bytes) {
    const lab::InRoot inside(device_);
    WriteFileAtomically(kTarget, bytes);
  }
  /// What a replacement that has to fail says; empty when it does not.
  std::string ErrorOfReplacing(std::string_view bytes = "new") {
    const lab::InRoot inside(device_);
    try {
      WriteFileAtomically(kTarget, bytes);
    } catch (const std::system_error& error) {
      return error.what();
    }
    return "";
  }
  mode_t ModeOf(const char* path) const { return device_.Snapshot().at(path).mode & 07777U; }

  lab::PrivateRoot device_;
};

TEST_F(WriteFileAtomicallyTest, MakesTheFile) {
  Replace("bytes\0\xFF"s);
  EXPECT_EQ(device_.Read(kTarget), "bytes\0\xFF"s);
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(WriteFileAtomicallyTest, MakesAnEmptyFile) {
  device_.Write(kTarget, "old");
  Replace("");
  EXPECT_EQ(device_.Read(kTarget), "");
}

TEST_F(WriteFileAtomicallyTest, ReplacesALongerFile) {
  device_.Write(kTarget, std::string(100'000, 'o'));
  Replace("new");
  EXPECT_EQ(device_.Read(kTarget), "new");
}

TEST_F(WriteFileAtomicallyTest, WritesLargeFilesWhole) {
  std::string bytes(5'000'000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 13);
  Replace(bytes);
  EXPECT_TRUE(device_.Read(kTarget) == bytes);
}

TEST_F(WriteFileAtomicallyTest, ModeIsForTheOwnerAloneWhateverTheUmask) {
  for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
    const mode_t earlier = ::umask(mask);
    {
      const lab::InRoot inside(device_);
      WriteFileAtomically(kTarget, "secret");
    }
    ::umask(earlier);
    EXPECT_EQ(ModeOf(kTarget), 0600U) << std::oct << mask;
  }
}

TEST_F(WriteFileAtomicallyTest, ModeOfTheEarlierFileIsNotTakenOver) {
  for (const mode_t mode : {0644U, 0666U, 0777U, 0000U, 04755U}) {
    device_.Write(kTarget, "old", mode);
    Replace("secret");
    EXPECT_EQ(ModeOf(kTarget), 0600U) << std::oct << mode;
  }
}

TEST_F(WriteFileAtomicallyTest, LeavesTheUmaskAsItWas) {
  const mode_t earlier = ::umask(027);
  {
    const lab::InRoot inside(device_);
    WriteFileAtomically(kTarget, "secret");
  }
  EXPECT_EQ(::umask(earlier), 027U);
}

TEST_F(WriteFileAtomicallyTest, IsANewFileThatHoldersOfTheOldOneDoNotSee) {
  device_.Write(kTarget, "old");
  const lab::InRoot inside(device_);
  std::ifstream holder(kTarget);
  WriteFileAtomically(kTarget, "new");
  std::string seen;
  holder >> seen;
  EXPECT_EQ(seen, "old");
}

TEST_F(WriteFileAtomicallyTest, LeftoverOfAnInterruptedRunIsNoObstacle) {
  device_.Write(kTemporary, std::string(10'000, 'h'), 0644);
  Replace("new");
  EXPECT_EQ(device_.Read(kTarget), "new");
  EXPECT_EQ(ModeOf(kTarget), 0600U);
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(WriteFileAtomicallyTest, LeftoverThatCannotBeOpenedIsNoObstacle) {
  device_.Write(kTemporary, "leftover", 0000);
  const testing_support::WithoutFilePrivileges ordinary;
  Replace("new");
  EXPECT_EQ(device_.Read(kTarget), "new");
}

TEST_F(WriteFileAtomicallyTest, LeftoverIsUnlinkedAndNotWrittenInto) {
  device_.Write("/etc/elsewhere", "untouched");
  const lab::InRoot inside(device_);
  ASSERT_EQ(::link("/etc/elsewhere", kTemporary), 0);
  WriteFileAtomically(kTarget, "new");
  std::string seen;
  std::ifstream("/etc/elsewhere") >> seen;
  EXPECT_EQ(seen, "untouched");
}

TEST_F(WriteFileAtomicallyTest, NoLinkAtTheTemporaryNameIsFollowed) {
  device_.Write("/etc/elsewhere", "untouched", 0644);
  device_.Link(kTemporary, "/etc/elsewhere");
  Replace("new");
  EXPECT_EQ(device_.Read("/etc/elsewhere"), "untouched");
  EXPECT_EQ(device_.Read(kTarget), "new");
  EXPECT_EQ(device_.Snapshot().at(kTarget).kind, lab::Entry::Kind::File);
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(WriteFileAtomicallyTest, NoDanglingLinkAtTheTemporaryNameIsFollowed) {
  device_.Link(kTemporary, "/etc/made_through_the_link");
  Replace("new");
  EXPECT_FALSE(device_.Exists("/etc/made_through_the_link"));
  EXPECT_EQ(device_.Read(kTarget), "new");
}

TEST_F(WriteFileAtomicallyTest, FIFOAtTheTemporaryNameIsNoObstacle) {
  device_.MakeFifo(kTemporary);
  Replace("new");
  EXPECT_EQ(device_.Read(kTarget), "new");
}

TEST_F(WriteFileAtomicallyTest, DirectoryAtTheTemporaryNameFailsAndTheTargetStays) {
  device_.Write(kTarget, "old", 0644);
  device_.Write(kTemporary + "/file"s, "kept");
  EXPECT_EQ(ErrorOfReplacing(),
            "cannot remove the leftover beside /usr/kelp/etc/wifi/global.json: Is a directory");
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_EQ(ModeOf(kTarget), 0644U);
  EXPECT_EQ(device_.Read(kTemporary + "/file"s), "kept");
}

TEST_F(WriteFileAtomicallyTest, LinkAtTheTargetIsReplacedAndNotFollowed) {
  device_.Write("/etc/elsewhere", "untouched");
  device_.Link(kTarget, "/etc/elsewhere");
  Replace("new");
  EXPECT_EQ(device_.Read("/etc/elsewhere"), "untouched");
  EXPECT_EQ(device_.Snapshot().at(kTarget).kind, lab::Entry::Kind::File);
  EXPECT_EQ(device_.Read(kTarget), "new");
}

TEST_F(WriteFileAtomicallyTest, MissingDirectoryFailsAndIsNotMade) {
  device_.Remove(kFolder);
  EXPECT_EQ(ErrorOfReplacing(), "cannot create /usr/kelp/etc/wifi/global.json: No such file or directory");
  EXPECT_FALSE(device_.Exists(kFolder));
}

TEST_F(WriteFileAtomicallyTest, FileInPlaceOfTheDirectoryFails) {
  device_.Remove(kFolder);
  device_.Write(kFolder, "file");
  EXPECT_EQ(ErrorOfReplacing(), "cannot create /usr/kelp/etc/wifi/global.json: Not a directory");
  EXPECT_EQ(device_.Read(kFolder), "file");
}

TEST_F(WriteFileAtomicallyTest, DirectoryAtTheTargetFailsAndNothingIsLeftBesideIt) {
  device_.Write(kTarget + "/file"s, "kept");
  EXPECT_EQ(ErrorOfReplacing(), "cannot replace /usr/kelp/etc/wifi/global.json: Is a directory");
  EXPECT_EQ(device_.Read(kTarget + "/file"s), "kept");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(WriteFileAtomicallyTest, EmptyDirectoryAtTheTargetFailsToo) {
  device_.MakeDirectory(kTarget);
  EXPECT_EQ(ErrorOfReplacing(), "cannot replace /usr/kelp/etc/wifi/global.json: Is a directory");
  EXPECT_EQ(device_.Snapshot().at(kTarget).kind, lab::Entry::Kind::Directory);
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(WriteFileAtomicallyTest, UnwritableDirectoryFailsAndTheTargetStays) {
  device_.Write(kTarget, "old");
  device_.SetMode(kFolder, 0555);
  {
    const testing_support::WithoutFilePrivileges ordinary;
    EXPECT_EQ(ErrorOfReplacing(), "cannot create /usr/kelp/etc/wifi/global.json: Permission denied");
  }
  device_.SetMode(kFolder, 0755);
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_FALSE(device_.Exists(kTemporary));
}

class WriteFileAtomicallyOnASmallDisk : private testing_support::OwnMounts, public WriteFileAtomicallyTest {};

TEST_F(WriteFileAtomicallyOnASmallDisk, FullDiskFailsTheTargetStaysAndNothingIsLeftBesideIt) {
  const testing_support::SmallDisk disk(device_.Path().string() + kFolder, "16k");
  device_.Write(kTarget, "old", 0640);
  EXPECT_EQ(ErrorOfReplacing(std::string(100'000, 'n')),
            "cannot write /usr/kelp/etc/wifi/global.json: No space left on device");
  EXPECT_EQ(device_.Read(kTarget), "old");
  EXPECT_EQ(ModeOf(kTarget), 0640U);
  EXPECT_FALSE(device_.Exists(kTemporary));
  EXPECT_EQ(ErrorOfReplacing("fits"), "");
  EXPECT_EQ(device_.Read(kTarget), "fits");
}

TEST_F(WriteFileAtomicallyOnASmallDisk, FailureWithoutAnEarlierTargetLeavesNothing) {
  const testing_support::SmallDisk disk(device_.Path().string() + kFolder, "16k");
  EXPECT_EQ(ErrorOfReplacing(std::string(100'000, 'n')),
            "cannot write /usr/kelp/etc/wifi/global.json: No space left on device");
  EXPECT_FALSE(device_.Exists(kTarget));
  EXPECT_FALSE(device_.Exists(kTemporary));
}

TEST_F(WriteFileAtomicallyTest, FilesInTheRootDirectoryAreReplacedToo) {
  {
    const lab::InRoot inside(device_);
    WriteFileAtomically("/file", "bytes");
  }
  EXPECT_EQ(device_.Read("/file"), "bytes");
  EXPECT_FALSE(device_.Exists("/file.new"));
}

TEST_F(WriteFileAtomicallyTest, LeavesNoDescriptorOpen) {
  const auto lowest_free = [] {
    const int descriptor = ::dup(0);
    ::close(descriptor);
    return descriptor;
  };
  const int before = lowest_free();
  Replace("bytes");
  device_.Remove(kTarget);
  device_.MakeDirectory(kTarget);
  ErrorOfReplacing();
  EXPECT_EQ(lowest_free(), before);
}

TEST_F(WriteFileAtomicallyTest, FlushDirectoryTakesDirectoriesOnly) {
  device_.Write(kTarget, "file");
  const lab::InRoot inside(device_);
  EXPECT_NO_THROW(FlushDirectory(kFolder));
  EXPECT_NO_THROW(FlushDirectory("/"));
  const auto error_of_flushing = [](const char* path) -> std::string {
    try {
      FlushDirectory(path);
    } catch (const std::system_error& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(error_of_flushing(kTarget),
            "cannot open directory /usr/kelp/etc/wifi/global.json: Not a directory");
  EXPECT_EQ(error_of_flushing("/missing"), "cannot open directory /missing: No such file or directory");
}

}  // namespace
}  // namespace KELP::Wifi
