#include "lab/plain/plain_way.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <string>

#include "lab/images/private_root.h"
#include "lab/plain/lent_files.h"
#include "lab/runs/namespaces.h"
#include "lab/runs/program_run.h"
#include "lab/runs/sealed_process.h"
#include "lab/runs/workbench.h"
#include "tests/support/child_process.h"
#include "tests/support/container_filter.h"
#include "tests/support/full_way.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing_support::InChild;

/// What `operation` gives in a process of a plain container.
std::string InContainer(const std::function<std::string()>& operation) {
  return InChild([&] {
    testing_support::Refuse(testing_support::Refused::AsInContainer);
    EnterNamespaces();
    return operation();
  });
}

std::string Told(const RunResult& run) {
  std::string told = std::to_string(run.status) + " " + run.out + run.err;
  for (const LogLine& line : run.log) told += line.message + "\n";
  for (const Tree* tree : {&run.before, &run.after}) {
    for (const auto& [path, entry] : *tree) {
      told += path + " " + std::to_string(entry.mode) + " " + entry.content + "\n";
    }
  }
  return told;
}

bool RunsBelow(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::error_code ignored;
    if (fs::read_symlink(entry.path() / "root", ignored).native().starts_with(folder.native())) return true;
  }
  return false;
}

TEST(PlainWay, IsTakenWhereTheFullOneIsRefusedAndNotElsewhere) {
  EXPECT_EQ(InContainer([] { return std::string(IsPlainWay() ? "plain" : "full"); }), "plain");
  testing_support::RequireFullWay();
  EXPECT_FALSE(IsPlainWay());
}

TEST(PlainWay, IsRefusedInOneLineWithoutChroot) {
  const std::string reason = InChild([] {
    testing_support::Refuse(testing_support::Refused::AndChroot);
    return WhyNotPossible().value_or("possible");
  });
  EXPECT_THAT(reason, HasSubstr("chroot: Operation not permitted"));
  EXPECT_THAT(reason, HasSubstr("--cap-add SYS_CHROOT"));
  EXPECT_EQ(reason.find('\n'), std::string::npos);
}

TEST(PlainWay, RunsAProgramWithTheSameResult) {
  testing_support::RequireFullWay();
  const auto run = [] {
    PrivateRoot root;
    root.Write("/etc/old.conf", "old=1\n", 0640);
    root.Write("/etc/gone.conf", "");
    root.MakeDirectory("/etc/archive", 0700);
    return Told(RunProgram(root, TEST_PROGRAM, {"--update-config", "8000"}));
  };
  const std::string told = InContainer(run);
  EXPECT_THAT(told, StartsWith("0 updating from 8000\n"));
  EXPECT_EQ(told, run());
}

TEST(PlainWay, PutsBackWhatADeviceHasInPlaceOfTheProgramAndItsLibraries) {
  const std::string path = "/usr/sbin/" + fs::path(TEST_PROGRAM).filename().native();
  const std::string library = FilesOfProgram(TEST_PROGRAM, path).at(1).device_path;
  const std::string answer = InContainer([&] {
    PrivateRoot root;
    root.Write(path, "the device's own", 0600);
    root.Link(library, "/nowhere");
    const Tree before = root.Snapshot();
    for (const char* word : {"first", "second"}) {
      const RunResult run = RunProgram(root, TEST_PROGRAM, {"say", word, ""});
      if (run.out != word || run.before != before || run.after != before) return word + run.err;
    }
    return std::string(root.Read(path) == "the device's own" && root.Snapshot() == before ? "put back"
                                                                                          : "changed");
  });
  EXPECT_EQ(answer, "put back");
}

TEST(PlainWay, LeavesNothingOfItsOwnInADevice) {
  EXPECT_EQ(InContainer([] {
              PrivateRoot root(PrivateRoot::Bare{});
              root.MakeDirectory("/dev");
              RunProgram(root, TEST_PROGRAM, {"exit", "0"});
              std::string files;
              for (const auto& entry : fs::recursive_directory_iterator(root.Path())) {
                if (entry.is_regular_file() && entry.file_size() > 0) files += entry.path();
              }
              return files;
            }),
            "");
}

TEST(PlainWay, EndsWhatAProgramLeavesRunning) {
  EXPECT_EQ(InContainer([] {
              PrivateRoot root;
              const RunResult left = RunProgram(root, TEST_PROGRAM, {"leave-daemon"});
              const bool is_left = RunsBelow(root.Path());
              const RunResult hung =
                  RunProgram(root, TEST_PROGRAM, {"sleep"}, {.timeout = std::chrono::milliseconds(50)});
              return std::to_string(left.status) + std::to_string(hung.timed_out) +
                     std::to_string(hung.signal) + (is_left || RunsBelow(root.Path()) ? " alive" : " alone");
            }),
            "019 alone");
}

TEST(PlainWay, TellsTheSignalThatEndedAProgram) {
  EXPECT_EQ(InContainer([] {
              PrivateRoot root;
              return std::to_string(RunProgram(root, TEST_PROGRAM, {"kill", std::to_string(SIGSEGV)}).signal);
            }),
            std::to_string(SIGSEGV));
}

TEST(PlainWay, RefusesWhatTakesMounts) {
  EXPECT_THAT(InContainer([] {
                PrivateRoot root;
                return RunProgram(root, TEST_PROGRAM, {"exit", "0"}, {.tmpfs = {{"/etc", 4096}}}).err;
              }),
              HasSubstr("takes mounts"));
}

TEST(PlainWay, EndsASealedProcessWithAllThatItStarted) {
  EXPECT_EQ(InContainer([] {
              const lab_test::TemporaryFolder folder;
              ::setenv("TMPDIR", folder.Path().c_str(), 1);
              const pid_t process = ForkSealed();
              if (process == 0) {
                Workbench bench(TEST_PROGRAM, 0);
                bench.Run({"leave-daemon"}, std::chrono::seconds(60));
                if (RunsBelow(folder.Path())) ::_exit(1);
                bench.Run({"sleep"}, std::chrono::seconds(60));
              }
              for (int i = 0; i < 3000 && !RunsBelow(folder.Path()); ++i) ::usleep(10'000);
              const bool has_run = RunsBelow(folder.Path());
              EndSealed(process);
              for (int i = 0; i < 3000 && RunsBelow(folder.Path()); ++i) ::usleep(10'000);
              return std::string(has_run ? "ran, " : "never ran, ") +
                     (RunsBelow(folder.Path()) ? "alive" : "ended");
            }),
            "ran, ended");
}

/// The loader is the same of both; a library of the program alone shows whose list it is.
TEST(LentFiles, AreTheProgramItsLoaderAndItsLibraries) {
  std::string paths;
  for (const LentFile& file : FilesOfProgram(TEST_PROGRAM, "/usr/sbin/x")) paths += file.device_path + "\n";
  EXPECT_THAT(paths, HasSubstr("/ld-"));
  EXPECT_THAT(paths, HasSubstr("/libstdc++.so.6\n"));
  EXPECT_THAT(paths, HasSubstr("/libc.so.6\n"));
  EXPECT_THAT(paths, ::testing::EndsWith("/usr/sbin/x\n"));
}

TEST(LentFiles, OfAScriptHaveItsInterpreter) {
  const lab_test::TemporaryFolder folder;
  folder.Write("script", "#!/bin/sh -e\nexit 0\n");
  std::string paths;
  for (const LentFile& file : FilesOfProgram(folder / "script", "/script")) paths += file.device_path + "\n";
  EXPECT_THAT(paths, HasSubstr("/libc.so.6\n/bin/sh\n/script\n"));
}

}  // namespace
}  // namespace lab
