#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include "lab/images/boot_environment.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/boot_environment.h"
#include "tests/base/small_disk.h"
#include "tests/support/failing_calls.h"
#include "tests/support/full_way.h"

namespace {

/// What one path is taken for while this lives, whatever stands there. One at a time.
class Pretence {
 public:
  Pretence(std::string path, mode_t kind, dev_t device = 0)
      : path_(std::move(path)), kind_(kind), device_(device) {
    current = this;
  }
  Pretence(const Pretence&) = delete;
  Pretence& operator=(const Pretence&) = delete;
  ~Pretence() { current = nullptr; }

  static void Apply(const char* path, struct stat& status) {
    if (current == nullptr || path != current->path_) return;
    status.st_mode = current->kind_ | 0600U;
    status.st_rdev = current->device_;
  }

 private:
  static inline const Pretence* current = nullptr;
  std::string path_;
  mode_t kind_;
  dev_t device_;
};

}  // namespace

// The library itself sees what is there.
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wreserved-identifier"
extern "C" {
int __real_stat(const char* path, struct stat* status);
int __wrap_stat(const char* path, struct stat* status) {
  const int result = __real_stat(path, status);
  if (result == 0) Pretence::Apply(path, *status);
  return result;
}
}

namespace {

TEST(BootEnvironmentFailures, LibraryThatCannotBeInitialisedIsNegative) {
  lab::PrivateRoot device;
  lab::InstallBootEnvironment(device, {{"usb3_disable", "1"}});
  const lab::InRoot inside(device);
  ASSERT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1);
  testing_support::FailingCalls calls;
  calls.Fail("libuboot_initialize", ENOMEM);
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1);
}

class InterruptedBootEnvironment : public ::testing::Test {
 protected:
  InterruptedBootEnvironment() { lab::InstallBootEnvironment(device_, {{"usb3_disable", "1"}}); }

  lab::PrivateRoot device_;
};

TEST_F(InterruptedBootEnvironment, IsAskedAgain) {
  const lab::InRoot inside(device_);
  testing_support::FailingCalls calls;
  calls.Fail("libuboot_open", EINTR, 1, 5);
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1);
  EXPECT_EQ(calls.Made({"libuboot_open"}).size(), 6U);
}

TEST_F(InterruptedBootEnvironment, IsNotAskedForEver) {
  const lab::InRoot inside(device_);
  testing_support::FailingCalls calls;
  calls.Fail("libuboot_open", EINTR, 1, std::numeric_limits<int>::max());
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
}

TEST_F(InterruptedBootEnvironment, FailureWithoutAnErrorNumberIsFinalWhateverWasInterruptedBefore) {
  device_.Write("/var/lock/fw_printenv.lock", "");  // nothing on the way leaves an error number either
  const lab::InRoot inside(device_);
  testing_support::FailingCalls calls;
  calls.Fail("libuboot_initialize", 0, 1, std::numeric_limits<int>::max());
  errno = EINTR;
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
  EXPECT_EQ(calls.Made({"libuboot_initialize"}).size(), 1U);
}

constexpr const char* kDevice = "/dev/mtdblock1";

struct Kind {
  mode_t kind;
  dev_t device;
};

class BootEnvironmentDevices : private testing_support::OwnMounts, public InterruptedBootEnvironment {};

TEST_F(BootEnvironmentDevices, BlockDevicesAndRawFlashAreStorage) {
  const lab::InRoot inside(device_);
  for (const auto& [kind, device] : {Kind{S_IFBLK, makedev(31, 1)}, Kind{S_IFCHR, makedev(90, 2)}}) {
    const Pretence pretence(kDevice, kind, device);
    EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1) << std::oct << kind;
  }
}

TEST_F(BootEnvironmentDevices, VolumesOnRawFlashAreStorageWhateverTheirNumber) {
  lab::InstallBootEnvironment(device_, {}, "/dev/ubi0_1");
  const lab::InRoot inside(device_);
  const testing_support::FailingCalls calls;
  const Pretence pretence("/dev/ubi0_1", S_IFCHR, makedev(250, 2));
  KELPUSBGetUSB3DisableUbootEnv();  // what the library makes of the name is its own business
  EXPECT_EQ(calls.Made({"libuboot_initialize"}).size(), 1U);
}

TEST_F(BootEnvironmentDevices, LinksAreToldByWhatTheyLeadTo) {
  lab::InstallBootEnvironment(device_, {}, "/dev/environment");
  const lab::InRoot inside(device_);
  ASSERT_EQ(::rename("/dev/environment", "/dev/ubi0_1"), 0);
  ASSERT_EQ(::symlink("ubi0_1", "/dev/environment"), 0);
  const testing_support::FailingCalls calls;
  {
    const Pretence pretence("/dev/environment", S_IFCHR, makedev(250, 2));
    KELPUSBGetUSB3DisableUbootEnv();
  }
  EXPECT_EQ(calls.Made({"libuboot_initialize"}).size(), 1U);

  ASSERT_EQ(::rename("/dev/ubi0_1", "/dev/ttyS0"), 0);
  ASSERT_EQ(::unlink("/dev/environment"), 0);
  ASSERT_EQ(::symlink("ttyS0", "/dev/ubi0_1"), 0);
  ASSERT_EQ(::symlink("ubi0_1", "/dev/environment"), 0);
  const Pretence pretence("/dev/environment", S_IFCHR, makedev(4, 64));
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
  EXPECT_EQ(calls.Made({"libuboot_initialize"}).size(), 1U);
}

TEST_F(BootEnvironmentDevices, OtherKindsAreNoStorage) {
  const lab::InRoot inside(device_);
  const testing_support::FailingCalls calls;
  for (const auto& [kind, device] :
       {Kind{S_IFCHR, makedev(4, 64)}, Kind{S_IFCHR, makedev(10, 130)}, Kind{S_IFCHR, makedev(31, 90)},
        Kind{S_IFIFO, 0}, Kind{S_IFSOCK, 0}, Kind{S_IFDIR, 0}}) {
    const Pretence pretence(kDevice, kind, device);
    EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1) << std::oct << kind;
  }
  EXPECT_TRUE(calls.Made({"libuboot_initialize"}).empty());
}

TEST_F(BootEnvironmentDevices, OneThatDoesNotAnswerIsNegativeAndNothingIsLeftOfTheWait) {
  // Opening it makes it the terminal of a test program that leads a session without one, which then ends with
  // it.
  const auto earlier = ::signal(SIGHUP, SIG_IGN);
  testing_support::RequireFullWay();
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(::unlockpt(terminal), 0);
  std::array<char, 64> name{};
  ASSERT_EQ(::ptsname_r(terminal, name.data(), name.size()), 0);
  lab::InstallBootEnvironment(device_, {}, "/dev/environment");
  device_.MakeDirectory("/var/lock");
  const std::string place = device_.Path().string() + "/dev/environment";
  ASSERT_EQ(::mount(name.data(), place.c_str(), nullptr, MS_BIND, nullptr), 0);
  {
    const lab::InRoot inside(device_);
    const Pretence pretence("/dev/environment", S_IFBLK);
    const int before = ::dup(0);
    ::close(before);
    EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
    const int after = ::dup(0);
    ::close(after);
    EXPECT_EQ(after, before);
    const int lock = ::open("/var/lock/fw_printenv.lock", O_WRONLY | O_CLOEXEC);
    EXPECT_GE(lock, 0);  // the library came as far as its lock
    EXPECT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
    ::close(lock);
  }
  ASSERT_EQ(::umount2(place.c_str(), MNT_DETACH), 0);
  ::close(terminal);
  ::signal(SIGHUP, earlier);
}

TEST_F(InterruptedBootEnvironment, IsNotAskedAtAllWithoutABoundToTheWait) {
  const lab::InRoot inside(device_);
  testing_support::FailingCalls calls;
  calls.Fail("timer_create", EAGAIN);
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
  EXPECT_TRUE(calls.Made({"libuboot_initialize"}).empty());
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1);
}

}  // namespace
