#include "lab/runs/program_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "lab/plain/plain_way.h"
#include "lab/runs/namespaces.h"
#include "tests/support/child_process.h"
#include "tests/support/full_way.h"
#include "tests/support/hang_guard.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

RunResult RunTest(PrivateRoot& root, const std::vector<std::string>& arguments,
                  const RunOptions& options = {}) {
  const testing_support::HangGuard guard("RunProgram of " + arguments.at(0));
  return testing_support::RunOrSkip([&] { return RunProgram(root, TEST_PROGRAM, arguments, options); });
}

RunResult RunTest(const std::vector<std::string>& arguments, const RunOptions& options = {}) {
  PrivateRoot root;
  return RunTest(root, arguments, options);
}

bool HostHas(const std::string& program) {
  return fs::exists("/usr/bin/" + program);
}

TEST(RunProgram, GivesTheConsoleOutput) {
  const RunResult result = RunTest({"say", std::string("to out\n"), "to err, no line end"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.signal, 0);
  EXPECT_FALSE(result.timed_out);
  EXPECT_EQ(result.out, "to out\n");
  EXPECT_EQ(result.err, "to err, no line end");
  EXPECT_THAT(result.log, IsEmpty());
}

TEST(RunProgram, GivesTheExitStatus) {
  EXPECT_EQ(RunTest({"exit", "0"}).status, 0);
  EXPECT_EQ(RunTest({"exit", "1"}).status, 1);
  EXPECT_EQ(RunTest({"exit", "255"}).status, 255);
}

TEST(RunProgram, GivesTheSignal) {
  const RunResult result = RunTest({"kill", std::to_string(SIGSEGV)});
  EXPECT_EQ(result.status, -1);
  EXPECT_EQ(result.signal, SIGSEGV);
  EXPECT_FALSE(result.timed_out);
}

TEST(RunProgram, KillsWhatDoesNotEnd) {
  const RunResult result = RunTest({"sleep"}, {.timeout = 100ms});
  EXPECT_TRUE(result.timed_out);
  EXPECT_EQ(result.status, -1);
  EXPECT_EQ(result.signal, SIGKILL);
}

TEST(RunProgram, KillsWhatTheProgramLeavesBehind) {
  const RunResult result = RunTest({"leave-behind"});
  EXPECT_EQ(result.status, 0);
  ASSERT_NE(result.out, "");
  const testing_support::HangGuard guard("the process that the program left");
  for (std::string text = "begin"; !text.empty() && text.find("State:\tZ") == std::string::npos;) {
    text = lab_test::ReadFile("/proc/" + result.out + "/status");
  }
}

// echo in place of an emulator prints the command that this is given.
TEST(RunProgram, HasTheProgramOfAnotherMachineRunByItsEmulator) {
  const RunResult result = RunTest({"say", "x"}, {.machine = ForeignMachine{"/usr/bin/echo", "/"}});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "/usr/sbin/lab_test_program say x\n");
  EXPECT_EQ(result.before, result.after);
}

TEST(RunProgram, RefusesAWrapperAroundTheProgramOfAnotherMachine) {
  EXPECT_THROW(
      RunTest({"exit", "0"}, {.wrapper = {"strace"}, .machine = ForeignMachine{"/usr/bin/echo", "/"}}),
      std::runtime_error);
}

TEST(RunProgram, GivesTheLog) {
  PrivateRoot root;
  EXPECT_THAT(RunTest(root, {"log", std::to_string(LOG_WARNING), "a: b\n%s"}).log,
              ElementsAre(LogLine{LOG_WARNING, LOG_USER, "lab_test_program", "a: b\n%s"}));
  EXPECT_THAT(RunTest(root, {"log", std::to_string(LOG_DAEMON | LOG_ERR), ""}).log,
              ElementsAre(LogLine{LOG_ERR, LOG_DAEMON, "lab_test_program", ""}));
}

TEST(RunProgram, GivesLongLogLinesWhole) {
  const RunResult result = RunTest({"log-long", std::to_string(LOG_ERR), "200000"});
  ASSERT_EQ(result.log.size(), 1U);
  EXPECT_EQ(result.log[0].message, std::string(200'000, 'x'));
}

TEST(RunProgram, DrainsEveryChannelWhileTheProgramRuns) {
  const RunResult result = RunTest({"say-much", "2000"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out.size(), 2'000'000U);
  EXPECT_EQ(result.err.size(), 2'000'000U);
  ASSERT_EQ(result.log.size(), 2000U);
  EXPECT_EQ(result.log.back().message, "line 1999");
}

TEST(RunProgram, ListensToNoLogWhenToldSo) {
  PrivateRoot root;
  const RunResult result = RunTest(root, {"log", "3", "unheard"}, {.collect_log = false});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.log, IsEmpty());
  EXPECT_EQ(RunTest(root, {"list", "/dev"}, {.collect_log = false}).out, "");
}

TEST(RunProgram, LeavesNoRoomInTheLogWhenToldSo) {
  const RunResult result = RunTest({"log", "3", "unheard"}, {.timeout = 100ms, .stuck_log = true});
  EXPECT_TRUE(result.timed_out);
  EXPECT_THAT(result.log, IsEmpty());
}

TEST(RunProgram, GivesTheDeviceBeforeAndAfter) {
  PrivateRoot root;
  root.Write("/etc/file", "before", 0600);
  const RunResult result = RunTest(root, {"write", "/etc/new", "text"});
  EXPECT_EQ(result.before, (Tree{{"/etc/file", {Entry::Kind::File, 0600, "before"}}}));
  EXPECT_EQ(result.after, (Tree{{"/etc/file", {Entry::Kind::File, 0600, "before"}},
                                {"/etc/new", {Entry::Kind::File, 0644, "text"}}}));
  EXPECT_EQ(root.Snapshot(), result.after);
}

TEST(RunProgram, MountsNothingThatTheCallerSees) {
  PrivateRoot root;
  const std::string mounts = lab_test::ReadFile("/proc/self/mounts");
  RunTest(root, {"exit", "0"}, {.with_proc = true, .tmpfs = {{"/etc", 65536}}, .wrapper = {"/usr/bin/env"}});
  EXPECT_EQ(lab_test::ReadFile("/proc/self/mounts"), mounts);
  EXPECT_TRUE(fs::is_empty(root.Path() / "usr/lib"));
  EXPECT_TRUE(fs::is_empty(root.Path() / "usr/sbin/lab_test_program"));
  EXPECT_TRUE(fs::is_empty(root.Path() / "proc"));
  EXPECT_EQ(root.Snapshot(), Tree{});
}

TEST(RunProgram, KeepsTheHostOut) {
  PrivateRoot root;
  EXPECT_EQ(RunTest(root, {"list", "/dev"}).out, "log\n");
  EXPECT_EQ(RunTest(root, {"list", "/usr/sbin"}).out, "lab_test_program\n");
  EXPECT_EQ(RunTest(root, {"read", "/etc/passwd"}).status, 1);
  EXPECT_EQ(RunTest(root, {"read", "/../../../../etc/passwd"}).status, 1);
}

TEST(RunProgram, LeavesTheHostsFilesUnwritable) {
  for (const char* path : {"/usr/lib/lab-was-here", "/usr/sbin/lab_test_program"}) {
    const std::string before = lab_test::ReadFile(TEST_PROGRAM);
    const RunResult result = RunTest({"write", path, "x"});
    EXPECT_FALSE(fs::exists("/usr/lib/lab-was-here"));
    EXPECT_EQ(lab_test::ReadFile(TEST_PROGRAM), before);
    if (IsPlainWay()) continue;  // in which it is all the device's own
    EXPECT_EQ(result.status, 1) << path;
    EXPECT_THAT(result.after, IsEmpty());
  }
}

TEST(RunProgram, RunsWhereAnImageHasFoldersOfTheHostsNames) {
  PrivateRoot root;
  root.Write("/lib/firmware/radio.bin", "firmware");
  root.Write("/usr/lib/opkg/status", "packages");
  root.Write("/usr/sbin/lab_test_program", "an older one");
  const RunResult result = RunTest(root, {"exit", "7"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.after, result.before);
  EXPECT_EQ(result.after.at("/usr/lib/opkg/status").content, "packages");
}

TEST(RunProgram, StartsTheProgramInADefinedState) {
  // What the caller has must not show.
  ::signal(SIGPIPE, SIG_IGN);
  const mode_t mask = ::umask(0177);
  const int leaked = ::dup(0);
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ::sigprocmask(SIG_BLOCK, &blocked, nullptr);

  const RunResult result = RunTest({"inheritance"}, {.rlimits = {{RLIMIT_NOFILE, 123}}});

  ::sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
  ::close(leaked);
  ::umask(mask);
  ::signal(SIGPIPE, SIG_DFL);
  EXPECT_EQ(result.out, "folder /\numask 22\nfiles 123 123\ndescriptor 0\ndescriptor 1\ndescriptor 2\n");
}

TEST(RunProgram, StartsTheProgramAsAskedFor) {
  PrivateRoot root;
  root.MakeDirectory("/data");
  const RunOptions options{.umask = 077, .cwd = "/data"};
  EXPECT_THAT(RunTest(root, {"inheritance"}, options).out, HasSubstr("folder /data\numask 77\n"));
  EXPECT_EQ(RunTest(root, {"write", "file", "x"}, options).after.at("/data/file").mode, 0600U);
}

TEST(RunProgram, GivesAFixedEnvironment) {
  ::setenv("LAB_TEST_SECRET", "1", 1);
  EXPECT_EQ(RunTest({"environment"}).out, "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n");
  EXPECT_EQ(RunTest({"environment"}, {.environment = {"A=1", "B=two words"}}).out, "A=1\nB=two words\n");
  ::unsetenv("LAB_TEST_SECRET");
}

TEST(RunProgram, GivesNoInput) {
  PrivateRoot root;
  EXPECT_EQ(RunTest(root, {"exit", "0"}).status, 0);
  if (!HostHas("cat")) GTEST_SKIP() << "no cat";
  const RunResult result = RunProgram(root, "/usr/bin/cat", {});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
}

TEST(RunProgram, ClosesTheStandardStreamsWhenAskedTo) {
  PrivateRoot root;
  EXPECT_EQ(RunTest(root, {"open-streams", "/etc/streams"}).after.at("/etc/streams").content, "012");
  const RunResult result = RunTest(root, {"open-streams", "/etc/streams"}, {.console = Console::Closed});
  EXPECT_EQ(result.after.at("/etc/streams").content, "");
}

TEST(RunProgram, BreaksTheConsolesPipesWhenAskedTo) {
  EXPECT_EQ(RunTest({"say", "text", ""}, {.console = Console::Broken}).signal, SIGPIPE);
  EXPECT_EQ(RunTest({"say", "", "text"}, {.console = Console::Broken}).signal, SIGPIPE);
  EXPECT_EQ(RunTest({"exit", "7"}, {.console = Console::Broken}).status, 7);
}

TEST(RunProgram, FillsTheConsolesPipesWhenAskedTo) {
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"say", "x", ""}, {"say", "", "x"}}) {
    const RunResult result = RunTest(command, {.timeout = 100ms, .console = Console::Full});
    EXPECT_TRUE(result.timed_out);
    EXPECT_EQ(result.out + result.err, "");
  }
  EXPECT_EQ(RunTest({"exit", "7"}, {.console = Console::Full}).status, 7);
}

TEST(RunProgram, WorksWhenTheCallerHasNoStandardStreams) {
  const std::string answer = testing_support::InChild([] {
    // Keeps the way back to the test, whatever number it has, out of the closing.
    for (const int descriptor : {0, 1, 2}) ::close(descriptor);
    const RunResult result = RunTest({"say", "out", "err"});
    return result.out + " " + result.err;
  });
  EXPECT_EQ(answer, "out err");
}

TEST(RunProgram, LetsRootThroughFileModesUnlessToldOtherwise) {
  PrivateRoot root;
  root.Write("/etc/secret", "x", 0);
  root.Write("/etc/read-only", "x", 0400);
  EXPECT_EQ(RunTest(root, {"read", "/etc/secret"}).status, 0);

  const RunOptions dropped{.drop_file_privileges = true};
  EXPECT_EQ(RunTest(root, {"read", "/etc/secret"}, dropped).err, "/etc/secret: Permission denied\n");
  EXPECT_EQ(RunTest(root, {"write", "/etc/read-only", "y"}, dropped).err,
            "/etc/read-only: Permission denied\n");
  EXPECT_EQ(RunTest(root, {"write", "/etc/new", "y"}, dropped).status, 0);
  EXPECT_EQ(RunTest(root, {"change-mode", "/etc/secret", "600"}, dropped).status, 0);  // its owner still may
}

TEST(RunProgram, MountsAFileSystemOfItsOwn) {
  PrivateRoot root;
  root.Write("/data/small/file", "x", 0640);
  root.Link("/data/link", "small");
  root.SetMode("/data", 0750);
  const RunResult result = RunTest(root, {"fill", "/data/full"}, {.tmpfs = {{"/data", 64 * 1024}}});
  EXPECT_EQ(result.err, "/data/full: No space left on device\n");
  EXPECT_EQ(result.after.at("/data").mode, 0750U);
  EXPECT_EQ(result.after.at("/data/small/file"), result.before.at("/data/small/file"));
  EXPECT_EQ(result.after.at("/data/link"), result.before.at("/data/link"));
  const std::size_t size = result.after.at("/data/full").content.size();
  EXPECT_GT(size, 4096U);
  EXPECT_LT(size, 64U * 1024U);
  EXPECT_EQ(root.Snapshot(), result.after);
}

TEST(RunProgram, KeepsRemovalsInAFileSystemOfItsOwn) {
  PrivateRoot root;
  root.Write("/etc/archive/.keep", "");
  root.Write("/etc/old.conf", "old");
  root.Write("/etc/gone.conf", "gone");
  const RunResult result = RunTest(root, {"--update-config", "1"}, {.tmpfs = {{"/etc", 1 << 20}}});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_FALSE(result.after.contains("/etc/old.conf"));
  EXPECT_FALSE(result.after.contains("/etc/gone.conf"));
  EXPECT_TRUE(result.after.contains("/etc/archive/old.conf"));
}

TEST(RunProgram, KeepsFileSystemsOfKilledPrograms) {
  PrivateRoot root;
  root.Write("/data/file", "x");
  const RunResult result = RunTest(root, {"sleep"}, {.tmpfs = {{"/data", 65536}}, .timeout = 100ms});
  EXPECT_TRUE(result.timed_out);
  EXPECT_EQ(result.after.at("/data/file").content, "x");
}

TEST(RunProgram, GivesTheHostsProcWithTheDevicesKernelEntries) {
  PrivateRoot root;
  root.Write("/proc/sys/kernel/device_entry", "001122334455\n", 0444);
  EXPECT_EQ(RunTest(root, {"read", "/proc/sys/kernel/device_entry"}, {.with_proc = false}).out,
            "001122334455\n");
  EXPECT_EQ(RunTest(root, {"list", "/proc"}, {.with_proc = false}).out, "sys\n");

  const RunOptions with_proc{.with_proc = true};
  EXPECT_EQ(RunTest(root, {"read", "/proc/sys/kernel/device_entry"}, with_proc).out, "001122334455\n");
  EXPECT_EQ(RunTest(root, {"list", "/proc/sys/kernel"}, with_proc).out, "device_entry\n");
  EXPECT_THAT(RunTest(root, {"list", "/proc"}, with_proc).out, HasSubstr("meminfo\n"));
  EXPECT_THAT(RunTest(root, {"read", "/proc/self/cmdline"}, with_proc).out, HasSubstr("lab_test_program"));
  EXPECT_EQ(root.Snapshot(), RunTest(root, {"exit", "0"}, with_proc).after);
}

TEST(RunProgram, RunsSanitizedPrograms) {
  PrivateRoot root;
  // Built like these tests; in a sanitized build it does not start without /proc.
  const RunResult result = RunProgram(root, DEVICELAB, {"--help"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("bootenv"));
}

TEST(RunProgram, PutsAWrapperBeforeTheProgram) {
  PrivateRoot root;
  const RunResult result = RunTest(root, {"environment"}, {.wrapper = {"env", "-i", "ADDED=1"}});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "ADDED=1\n");
  EXPECT_EQ(result.after, Tree{});
}

TEST(RunProgram, RunsUnderStrace) {
  if (!HostHas("strace")) GTEST_SKIP() << "no strace";
  PrivateRoot root;
  const RunOptions options{
      .wrapper = {"strace", "-f", "-o", "/tmp/trace", "-e", "inject=rename:error=EXDEV"}};
  root.Write("/etc/old.conf", "old");
  const RunResult result = RunTest(root, {"--update-config", "1"}, options);
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("cross-device"));
  EXPECT_THAT(result.after.at("/tmp/trace").content, HasSubstr("(INJECTED)"));
  EXPECT_THAT(result.log, ElementsAre(LogLine{LOG_WARNING, LOG_USER, "lab_test_program", "updating from 1"}));
}

TEST(RunProgram, KillsProgramsUnderStraceToo) {
  if (!HostHas("strace")) GTEST_SKIP() << "no strace";
  const RunResult result = RunTest({"sleep"}, {.wrapper = {"strace", "-o", "/tmp/trace"}, .timeout = 1s});
  EXPECT_TRUE(result.timed_out);
}

TEST(RunProgram, RunsUnderValgrind) {
  if (!HostHas("valgrind")) GTEST_SKIP() << "no valgrind";
  const RunResult result =
      RunTest({"say", "out", ""}, {.with_proc = true, .wrapper = {"valgrind", "--error-exitcode=99"}});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "out");
  EXPECT_THAT(result.err, HasSubstr("ERROR SUMMARY: 0 errors"));
}

TEST(RunProgram, RunsSeveralAtATime) {
  const auto run_some = [] {
    for (int i = 0; i < 10; ++i) EXPECT_EQ(RunTest({"log", "3", "x"}).log.size(), 1U);
  };
  std::jthread other(run_some);
  run_some();
}

TEST(RunProgram, WorksHoweverLongTheRootsPathIs) {
  const lab_test::TemporaryFolder temporary;
  PrivateRoot root = lab_test::RootWithLongPath(temporary);
  EXPECT_THAT(RunTest(root, {"log", "11", "far away"}).log,
              ElementsAre(LogLine{LOG_ERR, LOG_USER, "lab_test_program", "far away"}));
}

TEST(RunProgram, WorksFromAnyFolder) {
  const fs::path folder = fs::current_path();
  fs::current_path(fs::path(TEST_PROGRAM).parent_path());
  PrivateRoot root;
  EXPECT_EQ(RunProgram(root, fs::path(TEST_PROGRAM).filename(), {"exit", "5"}).status, 5);
  fs::current_path(folder);
}

class Starting : public ::testing::Test {
 protected:
  /// What starting the program throws.
  std::string Failure(const fs::path& program, const RunOptions& options = {}) {
    try {
      RunProgram(root_, program, {"exit", "0"}, options);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "nothing thrown";
  }

  PrivateRoot root_;
};

TEST_F(Starting, TellsWhatIsWrongWithTheProgram) {
  const lab_test::TemporaryFolder folder;
  folder.Write("text", "no program\n");
  EXPECT_EQ(Failure("/no/program"), "run /no/program: No such file or directory");
  EXPECT_EQ(Failure(folder / "text"), "run " + (folder / "text").native() + ": Permission denied");
  fs::permissions(folder / "text", fs::perms(0755));
  EXPECT_EQ(Failure(folder / "text"), "run /usr/sbin/text: Exec format error");
}

TEST_F(Starting, TellsWhatIsWrongWithTheOptions) {
  EXPECT_EQ(Failure(TEST_PROGRAM, {.cwd = "/nowhere"}), "enter /nowhere: No such file or directory");
  EXPECT_EQ(Failure(TEST_PROGRAM, {.wrapper = {"no-such-wrapper"}}),
            "run /usr/bin/no-such-wrapper: No such file or directory");
  EXPECT_EQ(Failure(TEST_PROGRAM, {.rlimits = {{-1, 0}}}), "set a resource limit: Invalid argument");
}

TEST_F(Starting, TellsWhatIsWrongWithOwnFileSystems) {
  testing_support::RequireFullWay();
  EXPECT_EQ(Failure(TEST_PROGRAM, {.tmpfs = {{"/nowhere", 4096}}}),
            "open /nowhere: No such file or directory");
  root_.Write("/data/file", std::string(100'000, 'x'));
  EXPECT_EQ(Failure(TEST_PROGRAM, {.tmpfs = {{"/data", 4096}}}), "write /data/file: No space left on device");
}

TEST_F(Starting, LeavesNothingBehindOnFailure) {
  Failure(TEST_PROGRAM, {.tmpfs = {{"/nowhere", 4096}}});
  EXPECT_FALSE(root_.Exists("/dev/log"));
  EXPECT_EQ(root_.Snapshot(), Tree{});
  EXPECT_EQ(RunTest(root_, {"exit", "0"}).status, 0);
}

class OrdinaryUserRuns : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!testing_support::MayBecomeOrdinaryUser()) GTEST_SKIP() << "needs root of the host";
    const std::string reason = testing_support::AsOrdinaryUser([] {
      if (::access(TEST_PROGRAM, X_OK) != 0) return std::string("the build folder is not for others");
      return WhyNotPossible().value_or("");
    });
    if (!reason.empty()) GTEST_SKIP() << reason;
  }

  static std::string RunEverything() {
    PrivateRoot root;
    root.Write("/proc/sys/kernel/entry", "kernel entry");
    root.Write("/data/file", "x");
    const RunResult first = RunTest(root, {"log", "3", "logged"}, {.tmpfs = {{"/data", 65536}}});
    const RunResult second = RunTest(root, {"read", "/proc/sys/kernel/entry"}, {.with_proc = true});
    const RunResult third = RunTest(root, {"write", "/data/new", "y"});
    const RunResult fourth = RunTest(root, {"read", "/locked"}, {.drop_file_privileges = true});
    return first.log.at(0).message + ", " + second.out + ", " + third.after.at("/data/new").content;
  }
};

TEST_F(OrdinaryUserRuns, WorkInNamespacesOfTheirOwn) {
  EXPECT_EQ(testing_support::AsOrdinaryUser(RunEverything), "logged, kernel entry, y");
}

TEST_F(OrdinaryUserRuns, WorkAfterEnteringNamespaces) {
  const std::string answer = testing_support::AsOrdinaryUser([] {
    EnterNamespaces();
    return RunEverything();
  });
  EXPECT_EQ(answer, "logged, kernel entry, y");
}

TEST_F(OrdinaryUserRuns, AreBoundByFileModesWhenToldSo) {
  const std::string answer = testing_support::AsOrdinaryUser([] {
    EnterNamespaces();
    PrivateRoot root;
    root.Write("/secret", "x", 0);
    return RunTest(root, {"read", "/secret"}).out +
           RunTest(root, {"read", "/secret"}, {.drop_file_privileges = true}).err;
  });
  EXPECT_EQ(answer, "x/secret: Permission denied\n");
}

}  // namespace
}  // namespace lab
