#include "platform/boot_environment.h"

#include <gtest/gtest.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/small_disk.h"
#include "tests/support/full_way.h"
#include "tests/support/without_file_privileges.h"

namespace {

using namespace std::string_literals;

constexpr const char* kConfiguration = "/etc/fw_env.config";
constexpr const char* kLock = "/var/lock/fw_printenv.lock";
constexpr std::size_t kSize = 0x1000;

std::uint32_t CRC32(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1U ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
  }
  return ~crc;
}

/// An environment of `size` bytes: checksum (little-endian), then `header` (empty, or the flags byte of a
/// redundant copy), then `variables`, each with its NUL.
std::string Environment(const std::string& variables, const std::string& header = "",
                        std::size_t size = kSize) {
  std::string data = variables;
  data.resize(size - 4 - header.size(), '\0');
  const std::uint32_t crc = CRC32(data);
  std::string checksum;
  for (unsigned shift = 0; shift < 32; shift += 8) checksum += static_cast<char>(crc >> shift);
  return checksum + header + data;
}

int LowestFreeDescriptor() {
  const int descriptor = ::dup(0);
  ::close(descriptor);
  return descriptor;
}

class BootEnvironment : public ::testing::Test {
 protected:
  BootEnvironment() {
    device_.MakeDirectory("/var/lock");
    device_.Write(kConfiguration, "/dev/environment 0x0 0x1000\n");
    device_.Write("/dev/environment", Environment("bootdelay=3\0"s));
  }

  int Ask() {
    const lab::InRoot inside(device_);
    return KELPUSBGetUSB3DisableUbootEnv();
  }
  int AskWithVariables(const std::string& variables) {
    device_.Write("/dev/environment", Environment(variables));
    return Ask();
  }

  std::string HostPath(const std::string& device_path) const { return device_.Path().string() + device_path; }

  /// Sets (or without a value removes) the variable as a person at the device's console does, with the real
  /// tool.
  void SetWithTool(const std::vector<std::string>& configuration_lines, const std::string& value) {
    std::string text;
    for (const std::string& line : configuration_lines) text += HostPath(line) + "\n";
    device_.Write("/tool.config", text);
    device_.Write("/default", "bootdelay=3\n");
    const std::string command = "fw_setenv -c '" + HostPath("/tool.config") + "' -f '" +
                                HostPath("/default") + "' usb3_disable " + value + " 2>/dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
  }

  bool WasLibraryAsked() { return device_.Exists(kLock); }

  lab::PrivateRoot device_;
};

/// Another tool of the boot environment that has the lock of the device.
class LockHolder {
 public:
  explicit LockHolder(const std::string& lock)
      : file_(::open(lock.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666)) {
    EXPECT_EQ(::flock(file_, LOCK_EX | LOCK_NB), 0) << "the lock is not free";
  }
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;
  ~LockHolder() { LetGo(); }
  void LetGo() { ::close(std::exchange(file_, -1)); }

 private:
  int file_;
};

TEST_F(BootEnvironment, AbsentVariableIsZero) {
  EXPECT_EQ(Ask(), 0);
}

TEST_F(BootEnvironment, EmptyVariableIsZero) {
  EXPECT_EQ(AskWithVariables("usb3_disable=\0"s), 0);
  EXPECT_EQ(AskWithVariables("a=1\0usb3_disable=\0b=2\0"s), 0);
}

TEST_F(BootEnvironment, ExactlyTheTextZeroIsZero) {
  EXPECT_EQ(AskWithVariables("usb3_disable=0\0"s), 0);
}

TEST_F(BootEnvironment, AnythingElseIsOne) {
  for (const auto* value :
       {"1", "2", "-1", "00", "01", "yes", "no", "true", "false", "0 ", " 0", "0x0", "off"}) {
    EXPECT_EQ(AskWithVariables("usb3_disable="s + value + "\0"s), 1) << value;
  }
}

TEST_F(BootEnvironment, OtherVariablesDoNotCount) {
  EXPECT_EQ(
      AskWithVariables("usb3_disabled=1\0usb3_disable_=1\0usb3=1\0USB3_DISABLE=1\0my_usb3_disable=1\0"s), 0);
}

TEST_F(BootEnvironment, EnvironmentOfTheRealToolIsUnderstood) {
  device_.Write("/dev/environment", std::string(kSize, '\0'));
  const std::vector<std::string> lines{"/dev/environment 0x0 0x1000"};
  SetWithTool(lines, "1");
  EXPECT_EQ(Ask(), 1);
  SetWithTool(lines, "0");
  EXPECT_EQ(Ask(), 0);
  SetWithTool(lines, "yes");
  EXPECT_EQ(Ask(), 1);
  SetWithTool(lines, "00");
  EXPECT_EQ(Ask(), 1);
  SetWithTool(lines, "");
  EXPECT_EQ(Ask(), 0);
}

TEST_F(BootEnvironment, RedundantEnvironmentOfTheRealToolIsUnderstood) {
  device_.Write(kConfiguration, "/dev/environment 0x0 0x1000\n/dev/second 0x0 0x1000\n");
  device_.Write("/dev/environment", std::string(kSize, '\0'));
  device_.Write("/dev/second", std::string(kSize, '\0'));
  const std::vector<std::string> lines{"/dev/environment 0x0 0x1000", "/dev/second 0x0 0x1000"};
  for (const auto& [value, expected] : {std::pair{"1", 1}, {"0", 0}, {"yes", 1}, {"", 0}, {"1", 1}}) {
    SetWithTool(lines, value);
    EXPECT_EQ(Ask(), expected) << value;
  }
}

TEST_F(BootEnvironment, NewerOfTwoCopiesCounts) {
  device_.Write(kConfiguration, "/dev/environment 0x0 0x1000\n/dev/second 0x0 0x1000\n");
  device_.Write("/dev/environment", Environment("usb3_disable=0\0"s, "\x05"));
  device_.Write("/dev/second", Environment("usb3_disable=1\0"s, "\x06"));
  EXPECT_EQ(Ask(), 1);
  device_.Write("/dev/environment", Environment("usb3_disable=0\0"s, "\x07"));
  EXPECT_EQ(Ask(), 0);
}

TEST_F(BootEnvironment, CorruptCopyIsPassedOverForTheGoodOne) {
  device_.Write(kConfiguration, "/dev/environment 0x0 0x1000\n/dev/second 0x0 0x1000\n");
  std::string corrupt = Environment("usb3_disable=0\0"s, "\x06");
  corrupt[100] = 'x';
  device_.Write("/dev/environment", corrupt);
  device_.Write("/dev/second", Environment("usb3_disable=1\0"s, "\x05"));
  EXPECT_EQ(Ask(), 1);
}

TEST_F(BootEnvironment, IsAskedAnewAtEveryCall) {
  EXPECT_EQ(AskWithVariables("usb3_disable=1\0"s), 1);
  EXPECT_EQ(AskWithVariables("usb3_disable=0\0"s), 0);
  device_.Remove("/dev/environment");
  EXPECT_EQ(Ask(), -1);
  EXPECT_EQ(AskWithVariables("usb3_disable=1\0"s), 1);
}

TEST_F(BootEnvironment, MissingConfigurationIsNegative) {
  device_.Remove(kConfiguration);
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, ConfigurationWithoutADeviceIsNegative) {
  for (const auto* text : {"", "# nothing\n", "\n\n"}) {
    device_.Write(kConfiguration, text);
    EXPECT_EQ(Ask(), -1) << text;
  }
}

TEST_F(BootEnvironment, ConfigurationLineThatCannotBeReadIsNegative) {
#ifdef __SANITIZE_ADDRESS__
  const __lsan::ScopedDisabler library_forgets_the_word_it_scanned;
#endif
  device_.Write(kConfiguration, "garbage\n");
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, LinesThatDescribeNoEnvironmentArePassedOver) {
#ifdef __SANITIZE_ADDRESS__
  const __lsan::ScopedDisabler library_forgets_the_word_it_scanned;
#endif
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  const std::string good = "/dev/environment 0x0 0x1000\n";
  for (const std::string& text :
       {" # device offset size\n" + good, "MTD device name\n" + good, good + "junk line zz\n",
        "\n \t\n" + good, "/dev/environment 0x0\n" + good, "\t/dev/environment\t0\t1000 ignored\n"s}) {
    device_.Write(kConfiguration, text);
    EXPECT_EQ(Ask(), 1) << text;
  }
}

TEST_F(BootEnvironment, NothingIsReadBehindTwoEnvironments) {
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s, "\x01"));
  device_.Write("/dev/second", Environment("usb3_disable=1\0"s, "\x02"));
  device_.Write(kConfiguration, "/dev/environment 0x0 0x1000\n/dev/second 0x0 0x1000\n/dev/third 0x0 0x1\n");
  EXPECT_EQ(Ask(), 1);
}

TEST_F(BootEnvironment, SmallEnvironmentIsRead) {
  device_.Write(kConfiguration, "/dev/environment 0x0 0x20\n");
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s, "", 0x20));
  EXPECT_EQ(Ask(), 1);
}

TEST_F(BootEnvironment, EnvironmentWithoutRoomForAVariableIsZeroOrNegativeButNeverTheEnd) {
  device_.Write("/dev/environment", Environment("", "", 6));
  device_.Write(kConfiguration, "/dev/environment 0x0 0x6\n");
  EXPECT_EQ(Ask(), 0);
  device_.Remove(kLock);
  for (const char* const size : {"0x5", "0x4", "0x1", "0x0", "0x1000001", "-1"}) {
    device_.Write(kConfiguration, "/dev/environment 0x0 "s + size + "\n");
    EXPECT_EQ(Ask(), -1) << size;
    EXPECT_FALSE(WasLibraryAsked()) << size;
  }
  // The largest one; its file is shorter.
  device_.Write(kConfiguration, "/dev/environment 0x0 0x1000000\n");
  EXPECT_EQ(Ask(), -1);
  EXPECT_TRUE(WasLibraryAsked());
}

TEST_F(BootEnvironment, LineWithAHashInFrontIsNoEnvironmentWhateverItSays) {
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  device_.Write(kConfiguration, "#/dev/missing 0x0 0x1\n/dev/environment 0x0 0x1000\n");
  EXPECT_EQ(Ask(), 1);
  // Two of them leave the room for the one that counts.
  device_.Write(kConfiguration, "#/a 0x0 0x1\n#/b 0x0 0x1\n/dev/environment 0x0 0x3\n");
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, LineEndsAtItsFirstNUL) {
#ifdef __SANITIZE_ADDRESS__
  const __lsan::ScopedDisabler library_forgets_the_word_it_scanned;
#endif
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  device_.Write(kConfiguration, "/dev/environment\0x 0x0 0x3\n/dev/environment 0x0 0x1000\n"s);
  EXPECT_EQ(Ask(), 1);
}

TEST_F(BootEnvironment, ConfigurationThatIsADirectoryIsNegative) {
  device_.Remove(kConfiguration);
  device_.MakeDirectory(kConfiguration);
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, MissingDeviceFileIsNegative) {
  device_.Remove("/dev/environment");
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, UnreadableDeviceFileIsNegative) {
  device_.Remove("/dev/environment");
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s), 0000);
  const lab::InRoot inside(device_);
  const testing_support::WithoutFilePrivileges ordinary;
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
}

TEST_F(BootEnvironment, CorruptEnvironmentIsNegative) {
  std::string corrupt = Environment("usb3_disable=1\0"s);
  corrupt[4] = 'U';
  device_.Write("/dev/environment", corrupt);
  EXPECT_EQ(Ask(), -1);

  corrupt = Environment("usb3_disable=1\0"s);
  corrupt[0] = static_cast<char>(corrupt[0] ^ 1);
  device_.Write("/dev/environment", corrupt);
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, ErasedEnvironmentIsNegative) {
  device_.Write("/dev/environment", std::string(kSize, '\xFF'));
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, TruncatedEnvironmentIsNegative) {
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s).substr(0, kSize / 2));
  EXPECT_EQ(Ask(), -1);
}

TEST_F(BootEnvironment, LockThatIsNeverLetGoIsNegativeAndNothingIsLeftOfTheWait) {
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  const int before = LowestFreeDescriptor();
  {
    const LockHolder holder(HostPath(kLock));
    EXPECT_EQ(Ask(), -1);
  }
  EXPECT_EQ(LowestFreeDescriptor(), before);
  EXPECT_EQ(Ask(), 1);
  const LockHolder next(HostPath(kLock));
}

TEST_F(BootEnvironment, LockThatIsLetGoAfterASecondIsWaitedFor) {
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  LockHolder holder(HostPath(kLock));
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    device_.Write("/dev/environment", Environment("usb3_disable=0\0"s));
    holder.LetGo();
  });
  EXPECT_EQ(Ask(), 0);  // what the holder of the lock has written
  other.join();
}

TEST_F(BootEnvironment, SignalDoesNotEndTheWaitForTheLock) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction earlier {};
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &earlier), 0);
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  LockHolder holder(HostPath(kLock));
  std::thread other([&, waiting = ::pthread_self()] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    ::pthread_kill(waiting, SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    device_.Write("/dev/environment", Environment("usb3_disable=0\0"s));
    holder.LetGo();
  });
  EXPECT_EQ(Ask(), 0);
  other.join();
  ::sigaction(SIGUSR1, &earlier, nullptr);
}

TEST_F(BootEnvironment, FIFOInPlaceOfTheLockOrTheDeviceIsNegative) {
  device_.Write("/dev/environment", Environment("usb3_disable=1\0"s));
  device_.MakeFifo(kLock);
  {
    // Where the library came as far as the lock, a reader of it would let it go on.
    const lab::Descriptor reader(::open(HostPath(kLock).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_EQ(Ask(), -1);
  }
  device_.Remove(kLock);
  device_.Remove("/dev/environment");
  device_.MakeFifo("/dev/environment");
  EXPECT_EQ(Ask(), -1);
  EXPECT_FALSE(WasLibraryAsked());
}

TEST_F(BootEnvironment, SocketOrFolderInPlaceOfTheDeviceIsNeverOpened) {
  device_.Remove("/dev/environment");
  device_.MakeDirectory("/dev/environment");
  EXPECT_EQ(Ask(), -1);
  EXPECT_FALSE(WasLibraryAsked());
  device_.Remove("/dev/environment");
  const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  {
    const lab::InRoot inside(device_);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/dev/environment"};
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  EXPECT_EQ(Ask(), -1);
  EXPECT_FALSE(WasLibraryAsked());
  ::close(listener);
}

class BootEnvironmentOnADevice : private testing_support::OwnMounts, public BootEnvironment {};

TEST_F(BootEnvironmentOnADevice, CharacterDeviceThatIsNoRawFlashIsNeverOpened) {
  testing_support::RequireFullWay();
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(::unlockpt(terminal), 0);
  std::array<char, 64> name{};
  ASSERT_EQ(::ptsname_r(terminal, name.data(), name.size()), 0);
  const std::string place = HostPath("/dev/environment");
  for (const std::string device : {"/dev/ptmx", static_cast<const char*>(name.data()), "/dev/zero",
                                   "/dev/null", "/dev/full", "/dev/random"}) {
    ASSERT_EQ(::mount(device.c_str(), place.c_str(), nullptr, MS_BIND, nullptr), 0) << device;
    EXPECT_EQ(Ask(), -1) << device;
    ASSERT_EQ(::umount2(place.c_str(), MNT_DETACH), 0) << device;
    EXPECT_FALSE(WasLibraryAsked()) << device;
  }
  ::close(terminal);
}

TEST_F(BootEnvironmentOnADevice, CharacterDeviceIsNeverOpenedAsTheSecondCopyEither) {
  testing_support::RequireFullWay();
  device_.Write("/dev/second", "");
  device_.Write(kConfiguration, "/dev/environment 0x0 0x1000\n/dev/second 0x0 0x1000\n");
  const std::string place = HostPath("/dev/second");
  ASSERT_EQ(::mount("/dev/zero", place.c_str(), nullptr, MS_BIND, nullptr), 0);
  EXPECT_EQ(Ask(), -1);
  ASSERT_EQ(::umount2(place.c_str(), MNT_DETACH), 0);
  EXPECT_FALSE(WasLibraryAsked());
}

TEST_F(BootEnvironment, LeavesNothingButItsLockFile) {
  const auto before = device_.Snapshot();
  EXPECT_EQ(Ask(), 0);
  auto after = device_.Snapshot();
  after.erase("/var/lock/fw_printenv.lock");
  ASSERT_EQ(after.size(), before.size());
  for (const auto& [path, entry] : before) {
    ASSERT_TRUE(after.contains(path)) << path;
    EXPECT_EQ(after.at(path).content, entry.content) << path;
  }
}

TEST_F(BootEnvironment, LeavesNoDescriptorOpen) {
  const int before = LowestFreeDescriptor();
  for (int i = 0; i < 5; ++i) Ask();
  device_.Remove("/dev/environment");
  for (int i = 0; i < 5; ++i) Ask();
  EXPECT_EQ(LowestFreeDescriptor(), before);
}

}  // namespace
