#include "lab/sweeps/descriptor_table.h"

#include <gtest/gtest.h>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

DescriptorTable After(const std::vector<std::string>& lines) {
  DescriptorTable table;
  for (const SystemCall& call : Calls(lines)) table.Follow(call);
  return table;
}

TEST(DescriptorTable, KnowsWhatADescriptorStandsFor) {
  const DescriptorTable table = After({"openat(AT_FDCWD, '/etc/fw_env.config', O_RDONLY) = 3"});
  const SystemCall read = Calls({"read(3, '', 9) = 0"})[0];
  ASSERT_NE(table.UsedBy(read), nullptr);
  EXPECT_EQ(table.UsedBy(read)->path, "/etc/fw_env.config");
}

TEST(DescriptorTable, ForgetsAClosedDescriptor) {
  const DescriptorTable table = After({"openat(AT_FDCWD, '/a', O_RDONLY) = 3", "close(3) = 0"});
  EXPECT_EQ(table.UsedBy(Calls({"read(3, '', 9) = 0"})[0]), nullptr);
}

TEST(DescriptorTable, TakesNoNoteOfAFailedOpen) {
  const DescriptorTable table =
      After({"openat(AT_FDCWD, '/a', O_RDONLY) = -1 ENOENT (No such file or directory)"});
  EXPECT_EQ(table.UsedBy(Calls({"read(-1, '', 9) = 0"})[0]), nullptr);
}

TEST(DescriptorTable, FollowsPathsRelativeToAnOpenFolder) {
  const DescriptorTable table = After({"openat(AT_FDCWD, '/usr/kelp/', O_RDONLY|O_DIRECTORY) = 3"});
  const SystemCall open = Calls({"openat(3, 'a.new', O_WRONLY|O_CREAT|O_EXCL, 0600) = 4"})[0];
  ASSERT_TRUE(table.OpenedBy(open).has_value());
  EXPECT_EQ(table.OpenedBy(open)->path, "/usr/kelp/a.new");
  EXPECT_TRUE(table.OpenedBy(open)->IsNew());
  EXPECT_TRUE(table.OpenedBy(open)->IsCreated());
  EXPECT_FALSE(table.OpenedBy(open)->IsDirectory());
}

TEST(DescriptorTable, KnowsSockets) {
  const DescriptorTable table = After({"socket(AF_UNIX, SOCK_DGRAM|SOCK_CLOEXEC, 0) = 5"});
  const SystemCall close = Calls({"close(5) = 0"})[0];
  ASSERT_NE(table.UsedBy(close), nullptr);
  EXPECT_TRUE(table.UsedBy(close)->is_socket);
}

}  // namespace
}  // namespace lab::sweeps
