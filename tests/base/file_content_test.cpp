#include "base/file_content.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/hang_guard.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi {
namespace {

using namespace std::string_literals;

constexpr const char* kFile = "/etc/file";

/// The error number of a read that has to fail, and whose text is the path and the cause.
int ErrorOfReading(const std::string& path, std::size_t size_limit = kNoSizeLimit) {
  const testing_support::HangGuard guard("reading " + path);
  try {
    ReadRegularFile(path, size_limit);
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.what(), "cannot read " + path + ": " + std::strerror(error.code().value()));
    return error.code().value();
  }
  return 0;
}

TEST(ReadRegularFile, GivesEveryByte) {
  lab::PrivateRoot device;
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  device.Write(kFile, all);
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadRegularFile(kFile), all);
}

TEST(ReadRegularFile, OfAnEmptyFileIsEmpty) {
  lab::PrivateRoot device;
  device.Write(kFile, "");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadRegularFile(kFile), "");
}

TEST(ReadRegularFile, GivesFilesOfEverySizeAroundItsBuffersWhole) {
  lab::PrivateRoot device;
  for (const std::size_t size : {1U, 510U, 511U, 512U, 513U, 1023U, 1024U, 1025U, 4095U, 4096U, 4097U,
                                 1048575U, 1048576U, 1048577U, 3000000U}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31);
    device.Write(kFile, bytes);
    const lab::InRoot inside(device);
    EXPECT_TRUE(ReadRegularFile(kFile) == bytes) << size;
  }
}

TEST(ReadRegularFile, GivesKernelEntriesThatReportNoSize) {
  struct stat status {};
  ASSERT_EQ(::stat("/proc/self/status", &status), 0);
  ASSERT_EQ(status.st_size, 0);
  EXPECT_GT(ReadRegularFile("/proc/self/status").size(), 100U);
  EXPECT_EQ(ReadRegularFile("/proc/sys/kernel/ostype"), "Linux\n");
}

TEST(ReadRegularFile, FollowsLinks) {
  lab::PrivateRoot device;
  device.Write("/etc/elsewhere", "bytes");
  device.Link(kFile, "/etc/elsewhere");
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadRegularFile(kFile), "bytes");
}

TEST(ReadRegularFile, OfAMissingFileThrows) {
  lab::PrivateRoot device;
  device.Write("/etc/file_in_the_way", "");
  device.Link("/etc/dangling", "/etc/nowhere");
  device.Link("/etc/loop", "/etc/loop");
  const lab::InRoot inside(device);
  EXPECT_EQ(ErrorOfReading(kFile), ENOENT);
  EXPECT_EQ(ErrorOfReading("/etc/dangling"), ENOENT);
  EXPECT_EQ(ErrorOfReading("/missing/folder/file"), ENOENT);
  EXPECT_EQ(ErrorOfReading("/etc/file_in_the_way/file"), ENOTDIR);
  EXPECT_EQ(ErrorOfReading("/etc/loop"), ELOOP);
  EXPECT_EQ(ErrorOfReading("/" + std::string(300, 'n')), ENAMETOOLONG);
}

TEST(ReadRegularFile, OfADirectoryThrows) {
  lab::PrivateRoot device;
  device.MakeDirectory(kFile);
  const lab::InRoot inside(device);
  EXPECT_EQ(ErrorOfReading(kFile), EISDIR);
}

TEST(ReadRegularFile, NeverWaitsForAFIFO) {
  lab::PrivateRoot device;
  device.MakeFifo(kFile);
  const lab::InRoot inside(device);
  EXPECT_NE(ErrorOfReading(kFile), 0);
}

TEST(ReadRegularFile, OfAFIFOWithAWriterThrowsToo) {
  lab::PrivateRoot device;
  device.MakeFifo(kFile);
  const lab::InRoot inside(device);
  const int writer = ::open(kFile, O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  ASSERT_EQ(::write(writer, "a=b\n", 4), 4);
  EXPECT_NE(ErrorOfReading(kFile), 0);
  ::close(writer);
}

TEST(ReadRegularFile, OfADeviceThrows) {
  EXPECT_NE(ErrorOfReading("/dev/null"), 0);
  EXPECT_NE(ErrorOfReading("/dev/zero"), 0);
}

TEST(ReadRegularFile, OfAFileWithoutReadPermissionThrows) {
  lab::PrivateRoot device;
  device.Write(kFile, "secret", 0000);
  const lab::InRoot inside(device);
  const testing_support::WithoutFilePrivileges ordinary;
  EXPECT_EQ(ErrorOfReading(kFile), EACCES);
}

TEST(ReadRegularFile, LimitIsTheLargestSizeThatIsTaken) {
  lab::PrivateRoot device;
  device.Write(kFile, std::string(1000, 'x'));
  const lab::InRoot inside(device);
  EXPECT_EQ(ReadRegularFile(kFile, 1001).size(), 1000U);
  EXPECT_EQ(ReadRegularFile(kFile, 1000).size(), 1000U);
  EXPECT_EQ(ErrorOfReading(kFile, 999), EFBIG);
  EXPECT_EQ(ErrorOfReading(kFile, 0), EFBIG);
}

TEST(ReadRegularFile, FileThatIsTooLargeCostsNoMemory) {
  lab::PrivateRoot device;
  device.Write(kFile, "");
  const lab::InRoot inside(device);
  constexpr off_t kSize = off_t{512} * 1024 * 1024;
  ASSERT_EQ(::truncate(kFile, kSize), 0);  // a hole, which takes no room on the disk
  const auto peak = [] {
    struct rusage usage {};
    EXPECT_EQ(::getrusage(RUSAGE_SELF, &usage), 0);
    return usage.ru_maxrss;  // KiB
  };
  const auto before = peak();
  EXPECT_EQ(ErrorOfReading(kFile, static_cast<std::size_t>(kSize) - 1), EFBIG);
  EXPECT_LT(peak() - before, 16 * 1024);
}

TEST(ReadRegularFile, LimitHoldsForFilesThatReportNoSize) {
  EXPECT_EQ(ErrorOfReading("/proc/self/status", 10), EFBIG);
}

TEST(ReadRegularFile, LeavesNoDescriptorOpen) {
  lab::PrivateRoot device;
  device.Write(kFile, "bytes");
  device.MakeDirectory("/etc/folder");
  const lab::InRoot inside(device);
  const int before = ::dup(0);
  ::close(before);
  ReadRegularFile(kFile);
  ErrorOfReading("/etc/folder");
  ErrorOfReading(kFile, 1);
  const int after = ::dup(0);
  ::close(after);
  EXPECT_EQ(before, after);
}

}  // namespace
}  // namespace KELP::Wifi
