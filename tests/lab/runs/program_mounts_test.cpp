#include "lab/runs/program_mounts.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/vfs.h>

#include <algorithm>
#include <fstream>

#include "lab/images/file_copy.h"
#include "lab/runs/namespaces.h"
#include "tests/support/child_process.h"
#include "tests/support/full_way.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using testing_support::InChild;

bool Mounts(const std::vector<HostMount>& mounts, const std::string& device_path) {
  return std::ranges::any_of(mounts,
                             [&](const HostMount& mount) { return mount.device_path == device_path; });
}

/// The private root, opened in the mount namespace that this enters.
Descriptor OpenInOwnNamespace(const PrivateRoot& root) {
  EnterMountNamespace();
  return Descriptor(
      Checked(::open(root.Path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC), "open", root.Path().native()));
}

TEST(PrepareHostMounts, FollowsTheHostsLayout) {
  PrivateRoot root;
  const auto mounts = PrepareHostMounts(root, "/bin/sh", "/usr/sbin/sh", "/", false);
  for (const std::string path : {"/usr/lib", "/usr/lib64", "/lib", "/lib64"}) {
    const auto status = fs::symlink_status(path);
    EXPECT_EQ(Mounts(mounts, path), fs::is_directory(status)) << path;
    EXPECT_EQ(root.Exists(path), fs::exists(status)) << path;
    if (fs::is_symlink(status)) {
      EXPECT_EQ(fs::read_symlink(root.Path().native() + path), fs::read_symlink(path));
    }
  }
  EXPECT_EQ(mounts.back().host_path, "/bin/sh");
  EXPECT_EQ(mounts.back().device_path, "/usr/sbin/sh");
  EXPECT_FALSE(Mounts(mounts, "/usr/bin"));
  EXPECT_EQ(root.Snapshot(), Tree{});
}

TEST(PrepareHostMounts, AddsTheHostsProgramsForAWrapper) {
  PrivateRoot root;
  const auto mounts = PrepareHostMounts(root, "/bin/sh", "/usr/sbin/sh", "/", true);
  EXPECT_TRUE(Mounts(mounts, "/usr/bin"));
  EXPECT_TRUE(root.Exists("/bin"));
}

TEST(PrepareHostMounts, MountsOverTheFoldersOfAnImage) {
  PrivateRoot root;
  root.MakeDirectory("/lib64");
  const auto mounts = PrepareHostMounts(root, "/bin/sh", "/usr/sbin/sh", "/", false);
  EXPECT_EQ(Mounts(mounts, "/lib64"), fs::is_directory("/lib64"));
}

TEST(PrepareHostMounts, TakesTheLibrariesOfAnotherMachineWhereTheyAre) {
  const lab_test::TemporaryFolder machine;
  fs::create_directories(machine.Path() / "usr/lib");
  fs::create_symlink("usr/lib", machine.Path() / "lib");
  PrivateRoot root;
  const auto mounts = PrepareHostMounts(root, "/bin/sh", "/usr/sbin/sh", machine.Path(), false);
  ASSERT_EQ(mounts.size(), 2U);
  EXPECT_EQ(mounts.front().host_path, machine.Path() / "usr/lib");
  EXPECT_EQ(mounts.front().device_path, "/usr/lib");
  EXPECT_EQ(fs::read_symlink(root.Path() / "lib"), "usr/lib");
  EXPECT_FALSE(root.Exists("/lib64"));
}

TEST(MountFromHost, MountsReadOnly) {
  testing_support::RequireFullWay();
  const lab_test::TemporaryFolder folder;
  folder.Write("file", "of the host");
  PrivateRoot root;
  root.MakeDirectory("/mnt");
  const std::string answer = InChild([&] {
    const Descriptor own = OpenInOwnNamespace(root);
    MountFromHost(own.Get(), {folder.Path(), "/mnt"});
    const bool writable = std::ofstream(root.Path() / "mnt/new").is_open();
    return lab_test::ReadFile(root.Path() / "mnt/file") + (writable ? ", writable" : ", read-only");
  });
  EXPECT_EQ(answer, "of the host, read-only");
  EXPECT_FALSE(root.Exists("/mnt/file"));
}

TEST(MountFromHost, IsNotLedOutOfTheRootByALink) {
  testing_support::RequireFullWay();
  const lab_test::TemporaryFolder folder;
  const lab_test::TemporaryFolder victim;
  folder.Write("file", "");
  PrivateRoot root;
  root.Link("/mnt", victim.Path());
  const std::string answer = InChild([&] {
    const Descriptor own = OpenInOwnNamespace(root);
    MountFromHost(own.Get(), {folder.Path(), "/mnt"});
    return std::string("mounted");
  });
  EXPECT_EQ(answer, "mount at /mnt: No such file or directory");
}

TEST(MountTmpfs, IsAsLargeAsAskedForAndOutlivesItsMount) {
  testing_support::RequireFullWay();
  PrivateRoot root;
  root.Write("/data/file", "x");
  const std::string answer = InChild([&] {
    Descriptor tmpfs;
    {
      const Descriptor own = OpenInOwnNamespace(root);
      tmpfs = MountTmpfs(own.Get(), "/data", 128 * 1024);
    }
    EnterMountNamespace();
    struct statfs status {};
    Checked(::fstatfs(tmpfs.Get(), &status), "examine", "/data");
    return std::to_string(status.f_blocks * static_cast<unsigned long>(status.f_bsize)) + " " +
           ReadAll(OpenAt(tmpfs.Get(), "file", O_RDONLY, "file").Get(), "file");
  });
  EXPECT_EQ(answer, "131072 x");
}

TEST(MountProc, NeedsAPlaceForIt) {
  testing_support::RequireFullWay();
  PrivateRoot root;
  EXPECT_EQ(InChild([&] {
              MountProc(OpenInOwnNamespace(root).Get());
              return std::string("mounted");
            }),
            "mount at /proc: No such file or directory");
}

}  // namespace
}  // namespace lab
