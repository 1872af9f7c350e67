// devicelab in a plain container: system calls refused by container-filter.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/plain/plain_way.h"
#include "tests/support/child_process.h"
#include "tests/support/full_way.h"
#include "tests/support/json_text.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::TemporaryFolder;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using testing_support::Shell;
using testing_support::ShellResult;

const std::string kSample = KELP_SOURCE "/devices/tri-band-mesh-router";
const std::string kOthers = "run " + kSample + " --from 8000 --program " TEST_PROGRAM;

ShellResult Contained(const std::string& arguments) {
  return Shell(CONTAINER_FILTER " " DEVICELAB " " + arguments);
}

ShellResult Lab(const std::string& arguments) {
  return Shell(DEVICELAB " " + arguments);
}

TEST(PlainCommands, TellTheSameOfADevice) {
  testing_support::RequireFullWay();
  const std::string run = "run " + kSample + " --from 8000 --documents --show-secrets 2>/dev/null";
  const ShellResult contained = Contained(run);
  EXPECT_EQ(contained.status, 0);
  EXPECT_THAT(contained.output, HasSubstr("/usr/kelp/etc/wifi/global.json:\n"));
  EXPECT_EQ(contained.output, Lab(run).output);
}

TEST(PlainCommands, WriteTheSameRecordsOfAFleet) {
  testing_support::RequireFullWay();
  const TemporaryFolder folder;
  const std::string path = folder.Path().native();
  ASSERT_EQ(Lab("new " + path + "/devices --count 12 --seed 5").status, 0);
  const auto records = [&](auto command, const std::string& name) {
    const ShellResult fleet = command("fleet @" + path +
                                      "/devices/list.jsonl --from 8000 --fail-on none --details "
                                      "--jobs 2 --output " +
                                      path + "/" + name);
    EXPECT_EQ(fleet.status, 0) << fleet.output;
    return Shell("sed 's/\"milliseconds\":[0-9]*//' " + path + "/" + name + " | sort").output;
  };
  const std::string full = records(Lab, "full");
  EXPECT_THAT(full, HasSubstr("\"household\""));
  EXPECT_EQ(records(Contained, "plain"), full);
}

TEST(PlainCommands, ExplainAndCompare) {
  const TemporaryFolder folder;
  const ShellResult explained = Contained("explain " + kSample + " --from 8000 countryCode 2>/dev/null");
  EXPECT_EQ(explained.status, 0) << explained.output;
  EXPECT_THAT(explained.output, HasSubstr("countryCode"));
  const ShellResult compared = Contained(
      "compare " + kSample + " --from 8000 --old " KELP_PROGRAM " --new " KELP_PROGRAM " 2>/dev/null");
  EXPECT_EQ(compared.status, 0);
  EXPECT_EQ(compared.output, "0 of 1 devices differ\n");
}

TEST(PlainCommands, SayOnceWhatTheyDoNotKeepApart) {
  const ShellResult told = Contained("run " + kSample + " --from 8000 2>&1 >/dev/null");
  EXPECT_THAT(told.output,
              StartsWith("devicelab: this container lets no process mount or make namespaces ("));
  EXPECT_THAT(told.output, HasSubstr("plain chroot"));
  EXPECT_EQ(std::ranges::count(told.output, '\n'), 2);
  const ShellResult json = Contained("run " + kSample + " --from 8000 --json 2>/dev/null");
  EXPECT_EQ(testing_support::ParseJson(json.output)["notKeptApart"],
            testing_support::ParseJson(R"(["root folder", "processes", "temporary files", "storage"])"));
  const ShellResult compared = Contained("compare " + kSample +
                                         " --from 8000 --json --trust-program --old " KELP_PROGRAM
                                         " --new " TEST_PROGRAM " 2>/dev/null");
  EXPECT_THAT(compared.output,
              EndsWith(R"("notKeptApart":["root folder","processes","temporary files","storage"]})"
                       "\n"));
  testing_support::RequireFullWay();
  EXPECT_FALSE(testing_support::ParseJson(Lab("run " + kSample + " --from 8000 --json").output)
                   .isMember("notKeptApart"));
}

TEST(PlainCommands, RefuseAnotherProgramUnlessItIsTrusted) {
  const ShellResult refused = Contained(kOthers);
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.output,
            "devicelab: in this container nothing keeps " TEST_PROGRAM
            " from leaving the device: give --trust-program as well if it may run here as root\n");
  EXPECT_THAT(Contained(kOthers + " --trust-program").output, HasSubstr("from build 8000: "));
  EXPECT_THAT(
      Contained("compare " + kSample + " --from 8000 --old " KELP_PROGRAM " --new " TEST_PROGRAM).output,
      HasSubstr("--trust-program"));
  EXPECT_THAT(Contained("run " + kSample + " --from 8000 --program " KELP_PROGRAM).output,
              Not(HasSubstr("--trust-program")));
}

TEST(PlainCommands, ShowImagesWhereNoRootCanBeEntered) {
  const TemporaryFolder folder;
  const std::string archive = (folder / "image.tar").native();
  ASSERT_EQ(Shell("tar -C " + kSample + " -cf " + archive + " .").status, 0);
  const std::string refusing =
      "TMPDIR=" + folder.Path().native() + " " CONTAINER_FILTER " --and-chroot " DEVICELAB " ";
  const ShellResult shown = Shell(refusing + "show " + archive);
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.output, Lab("show " + archive).output);
  const ShellResult run = Shell(refusing + "run " + archive + " --from 8000");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("--cap-add SYS_CHROOT"));
  EXPECT_EQ(std::ranges::count(run.output, '\n'), 1) << run.output;
  EXPECT_EQ(Shell("ls " + folder.Path().native()).output, "image.tar\n");
}

/// A run of a program that waits, in a container and with a temporary folder of its own.
class PlainProcess : public ::testing::Test {
 protected:
  void Start() {
    temporary_ = std::make_unique<TemporaryFolder>();
    lab_ = ::fork();
    if (lab_ != 0) return;
    ::setenv("TMPDIR", temporary_->Path().c_str(), 1);
    ::execl(CONTAINER_FILTER, CONTAINER_FILTER, DEVICELAB, "run", kSample.c_str(), "--from", "wait",
            "--program", TEST_PROGRAM, "--trust-program", nullptr);
    ::_exit(127);
  }

  /// Processes by what they run, from the root folder that they are in on.
  static std::vector<pid_t> Those(const std::function<bool(const fs::path&)>& is_one) {
    std::vector<pid_t> found;
    for (const auto& entry : fs::directory_iterator("/proc")) {
      if (is_one(entry.path())) found.push_back(std::stoi(entry.path().filename()));
    }
    return found;
  }

  static std::string LinkOf(const fs::path& link) {
    std::error_code ignored;
    return fs::read_symlink(link, ignored);
  }

  std::vector<pid_t> Programs() const {
    return Those([&](const fs::path& process) {
      return LinkOf(process / "root").find(Guarded()) != std::string::npos;
    });
  }

  /// Where its temporary files are, which may be in memory.
  std::string Guarded() const {
    for (const fs::path& place : {temporary_->Path(), fs::path("/dev/shm")}) {
      for (const auto& entry : fs::directory_iterator(place)) {
        const std::string path = entry.path().native();
        if (path.find("/devicelab-guarded.") == std::string::npos) continue;
        const bool is_its = !Those([&](const fs::path& process) {
                               return process.filename() == std::to_string(lab_) && HasOpen(process, path);
                             }).empty();
        if (is_its) return path;
      }
    }
    return "/nowhere";
  }

  static bool HasOpen(const fs::path& process, const std::string& path) {
    std::error_code ignored;
    for (const auto& descriptor : fs::directory_iterator(process / "fd", ignored)) {
      if (LinkOf(descriptor.path()) == path) return true;
    }
    return false;
  }

  static void Await(const char* what, const std::function<bool()>& condition) {
    for (int i = 0; i < 3000; ++i) {
      if (condition()) return;
      ::usleep(10'000);
    }
    throw std::runtime_error(std::string("waited in vain for ") + what);
  }

  pid_t lab_ = -1;
  std::unique_ptr<TemporaryFolder> temporary_;
};

TEST_F(PlainProcess, LeavesNothingBehindWhateverEndsIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) {
    Start();
    Await("the program", [&] { return !Programs().empty(); });
    const std::string folder = Guarded();
    const std::vector<pid_t> programs = Programs();
    ::kill(lab_, signal);
    ::waitpid(lab_, nullptr, 0);
    Await("the guard", [&] { return !fs::exists(folder); });
    for (const pid_t program : programs) {
      Await("the program's end",
            [&] { return LinkOf("/proc/" + std::to_string(program) + "/root").empty(); });
    }
  }
}

TEST_F(PlainProcess, ClearsUpAtTheNextStartWhatWasLeftWithTheGuardKilled) {
  Start();
  Await("the program", [&] { return !Programs().empty(); });
  const std::string folder = Guarded();
  const std::vector<pid_t> guards = Those(
      [&](const fs::path& process) { return HasOpen(process, folder) && LinkOf(process / "root") == "/"; });
  ASSERT_GE(guards.size(), 2U) << "devicelab and its guard";
  for (const pid_t process : guards) ::kill(process, SIGSTOP);
  for (const pid_t process : guards) ::kill(process, SIGKILL);
  ::waitpid(lab_, nullptr, 0);
  EXPECT_TRUE(fs::exists(folder));
  // The lock goes with the last that held it.
  Await("the next start to clear up", [&] {
    Shell("TMPDIR=" + temporary_->Path().native() + " " CONTAINER_FILTER " " DEVICELAB " run " + kSample +
          " --from 8000");
    return !fs::exists(folder);
  });
}

/// What devicelab says with a file system of these options at its temporary folder, and in memory.
std::string SaidWithTemporaryFiles(const std::string& options) {
  return Shell("unshare --mount sh -c 'mount -t tmpfs -o " + options +
               " tmpfs /dev/shm && mount -t tmpfs -o " + options +
               " tmpfs /tmp && TMPDIR=/tmp " CONTAINER_FILTER " " DEVICELAB " run " + kSample +
               " --from 8000 && echo done; ls -A /tmp /dev/shm'")
      .output;
}

TEST(PlainFolders, ThatLetNoProgramRunAreNamed) {
  testing_support::RequireFullWay();
  EXPECT_EQ(
      SaidWithTemporaryFiles("noexec"),
      "devicelab: /tmp lets no program run (it is mounted noexec): name a folder that does with TMPDIR\n"
      "/dev/shm:\n\n/tmp:\n");
}

TEST(PlainFolders, WithoutRoomForTheLibrariesAreNamed) {
  testing_support::RequireFullWay();
  const std::string said = SaidWithTemporaryFiles("size=2m");
  EXPECT_THAT(said, HasSubstr("devicelab: no room in /tmp/devicelab-guarded."));
  EXPECT_THAT(said,
              HasSubstr("MiB): make room, or name another folder with TMPDIR: No space left on device\n"));
  EXPECT_THAT(said, EndsWith("/dev/shm:\n\n/tmp:\n"));
}

TEST(OrdinaryUsers, AreToldWhatTakesTheCapabilitiesAway) {
  if (!testing_support::MayBecomeOrdinaryUser()) GTEST_SKIP() << "needs root of the host";
  testing_support::RequireFullWay();
  if (Shell("setpriv --reuid 65534 --clear-groups test -x " DEVICELAB).status != 0) {
    GTEST_SKIP() << "the build folder is not for others";
  }
  const ShellResult told =
      Shell("setpriv --reuid 65534 --regid 65534 --clear-groups --bounding-set=-all " CONTAINER_FILTER
            " --mounts-alone " DEVICELAB " run " +
            kSample + " --from 8000");
  EXPECT_EQ(told.status, 1);
  EXPECT_THAT(told.output, HasSubstr("Permission denied).\n"));
  EXPECT_THAT(told.output, HasSubstr("takes its capabilities away"));
  EXPECT_THAT(told.output, HasSubstr("(sudo)"));
  EXPECT_LE(std::ranges::count(told.output, '\n'), 3) << told.output;
}

}  // namespace
}  // namespace lab
