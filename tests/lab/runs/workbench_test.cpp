#include "lab/runs/workbench.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <functional>
#include <thread>

#include "lab/images/file_copy.h"
#include "lab/runs/sealed_process.h"
#include "tests/support/full_way.h"
#include "tests/support/mounts.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using ::testing::HasSubstr;

constexpr std::chrono::seconds kLong{60};
constexpr std::uintmax_t kSize = 64 << 20;

/// What `operation` gives in a sealed process, or the text of its exception.
std::string InSealedProcess(const std::function<std::string()>& operation) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return "pipe";
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t pid = ForkSealed();
  if (pid == 0) {
    std::string text;
    try {
      text = operation();
    } catch (const std::exception& error) {
      text = error.what();
    }
    WriteAll(writing.Get(), text, "");
    ::_exit(0);
  }
  writing.Close();
  std::string text = ReadAll(reading.Get(), "");
  ::waitpid(pid, nullptr, 0);
  return text;
}

std::string Paths(const Tree& tree) {
  std::string paths;
  for (const auto& [path, entry] : tree) paths += path + "\n";
  return paths;
}

TEST(Workbench, RunsOneDeviceAfterAnother) {
  EXPECT_EQ(InSealedProcess([] {
              Workbench bench(TEST_PROGRAM, kSize);
              std::string told;
              for (const char* name : {"first", "second"}) {
                bench.Device().Write("/etc/device", name);
                const RunResult result = bench.Run({"read", "/etc/device"}, kLong);
                told += result.out + " " + std::to_string(result.status) + "\n" + Paths(result.before) +
                        Paths(result.after);
                told += bench.Clear() ? "clear\n" : "broken\n";
              }
              return told;
            }),
            "first 0\n/etc/device\n/etc/device\nclear\nsecond 0\n/etc/device\n/etc/device\nclear\n");
}

TEST(Workbench, TellsWhatAProgramDid) {
  EXPECT_EQ(InSealedProcess([] {
              Workbench bench(TEST_PROGRAM, kSize);
              const RunResult said = bench.Run({"say", "out", "err"}, kLong);
              const RunResult logged = bench.Run({"log", "11", "text"}, kLong);
              const RunResult killed = bench.Run({"kill", "11"}, kLong);
              return said.out + said.err + logged.log.at(0).message +
                     std::to_string(logged.log.at(0).severity) + " " + std::to_string(killed.signal) +
                     std::to_string(killed.status);
            }),
            "outerrtext3 11-1");
}

TEST(Workbench, LeavesNothingOfADeviceForTheNext) {
  EXPECT_EQ(InSealedProcess([] {
              Workbench bench(TEST_PROGRAM, kSize);
              PrivateRoot& device = bench.Device();
              device.Write("/usr/kelp/deep/file", "x", 0);
              device.Link("/usr/link", "/etc");
              device.MakeFifo("/tmp/fifo");
              device.MakeDirectory("/closed", 0);
              device.SetMode("/etc", 0700);
              device.Write("/usr/lib/hidden", "x");
              bench.Run({"write", "/etc/written", "x"}, kLong);
              if (!bench.Clear()) return std::string("broken");
              return Paths(device.Snapshot()) + Paths(bench.Run({"say", "", ""}, kLong).before);
            }),
            "");
}

TEST(Workbench, TellsWhenItIsOfNoMoreUse) {
  EXPECT_EQ(InSealedProcess([] {
              Workbench bench(TEST_PROGRAM, kSize);
              bench.Device().Remove("/tmp");
              return std::string(bench.Clear() ? "clear" : "broken");
            }),
            "broken");
}

TEST(Workbench, TakesADeviceThatHasItsOwnFolderWhereTheHostHasALink) {
  EXPECT_EQ(InSealedProcess([] {
              Workbench bench(TEST_PROGRAM, kSize, Workbench::Fittings::Last);
              bench.Device().Write("/lib/own", "x");
              bench.Device().Link("/tmp", "/var");
              const RunResult result = bench.Run({"say", "ran", ""}, kLong);
              return result.out + result.err + "\n" + Paths(result.after);
            }),
            "ran\n/lib\n/lib/own\n/tmp\n");
}

TEST(Workbench, EndsAProgramThatHangsWithAllItsChildren) {
  testing_support::RequireFullWay();
  EXPECT_THAT(InSealedProcess([] {
                Workbench bench(TEST_PROGRAM, kSize);
                const RunResult hung = bench.Run({"sleep"}, std::chrono::milliseconds(50));
                const RunResult left = bench.Run({"leave-daemon"}, kLong);
                std::string told = std::to_string(hung.timed_out) + std::to_string(hung.signal) +
                                   std::to_string(left.status);
                // All that is left of the namespace is this process: there is nobody to send a signal to.
                told += ::kill(-1, 0) == 0 ? " alive" : " alone";
                return told;
              }),
              HasSubstr("190 alone"));
}

TEST(Workbench, KeepsTheStartOfWhatIsSaidWithoutEnd) {
  EXPECT_EQ(InSealedProcess([] {
              Workbench bench(TEST_PROGRAM, kSize);
              const RunResult result = bench.Run({"say-forever"}, std::chrono::seconds(1));
              return std::to_string(result.timed_out) + std::to_string(result.out.size() <= (16 << 20));
            }),
            "11");
}

TEST(Workbench, StartsAProgramAsADeviceDoes) {
  EXPECT_THAT(InSealedProcess([] {
                sigset_t all;
                ::sigfillset(&all);
                ::sigprocmask(SIG_BLOCK, &all, nullptr);
                ::signal(SIGPIPE, SIG_IGN);
                Workbench bench(TEST_PROGRAM, kSize);
                return bench.Run({"inheritance"}, kLong).out + bench.Run({"environment"}, kLong).out;
              }),
              ::testing::MatchesRegex("folder /\numask 22\nfiles [0-9]+ [0-9]+\ndescriptor 0\n"
                                      "descriptor 1\ndescriptor 2\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\n"));
}

TEST(Workbench, KeepsWhatADeviceWritesWithinItsSize) {
  testing_support::RequireFullWay();
  EXPECT_THAT(InSealedProcess([] {
                Workbench bench(TEST_PROGRAM, 1 << 20);
                const RunResult result = bench.Run({"fill", "/etc/full"}, kLong);
                return std::to_string(result.after.at("/etc/full").content.size() <= (1 << 20)) + result.err;
              }),
              HasSubstr("1/etc/full: No space left on device"));
}

TEST(Workbench, IsNotSeenOutside) {
  testing_support::RequireFullWay();
  const auto mounts = [] { return testing_support::MountsBelow("/sys"); };  // where a workbench is
  const auto before = mounts();
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const pid_t pid = ForkSealed();
  if (pid == 0) {
    const Workbench bench(TEST_PROGRAM, kSize);
    static_cast<void>(::write(ends[1], "x", 1) == 1);
    while (true) ::pause();
  }
  char ready = 0;
  ASSERT_EQ(::read(ends[0], &ready, 1), 1);
  EXPECT_EQ(mounts(), before);
  EXPECT_NE(lab_test::ReadFile("/proc/" + std::to_string(pid) + "/mounts"),
            lab_test::ReadFile("/proc/self/mounts"));
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
  for (const int end : ends) ::close(end);
}

TEST(SealedProcess, TakesItsChildrenAlong) {
  testing_support::RequireFullWay();
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const pid_t pid = ForkSealed();
  if (pid == 0) {
    if (::fork() == 0) {
      ::setsid();
      static_cast<void>(::write(ends[1], "x", 1) == 1);
      while (true) ::pause();
    }
    ::close(ends[1]);
    while (true) ::pause();
  }
  ::close(ends[1]);
  char byte = 0;
  ASSERT_EQ(::read(ends[0], &byte, 1), 1);
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
  pollfd end{ends[0], POLLIN, 0};
  EXPECT_EQ(::poll(&end, 1, 10'000), 1);
  EXPECT_EQ(::read(ends[0], &byte, 1), 0) << "the last holder of the other end is gone";
  ::close(ends[0]);
}

}  // namespace
}  // namespace lab
