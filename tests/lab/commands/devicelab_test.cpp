#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <stdexcept>
#include <thread>

#include "lab/images/boot_environment.h"
#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "lab/images/tree.h"
#include "lab/plain/plain_way.h"
#include "lab/runs/namespaces.h"
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
using ::testing::StartsWith;
using testing_support::Shell;
using testing_support::ShellResult;

const std::string kProgram = " --program " TEST_PROGRAM " --trust-program";

/// A device image and a folder for everything else.
class DeviceLab : public ::testing::Test {
 protected:
  DeviceLab() {
    image_.Write("etc/old.conf", "old=1\n");
    image_.Write("etc/gone.conf", "");
    image_.Write("etc/archive/.keep", "");
  }

  static ShellResult Lab(const std::string& arguments) {
    return testing_support::WithoutNotice(Shell(std::string(DEVICELAB) + " " + arguments));
  }

  ShellResult Run(const std::string& build) const {
    return Lab("run " + image_.Path().native() + " --from " + build + kProgram);
  }

  TemporaryFolder image_;
  TemporaryFolder folder_;
};

TEST_F(DeviceLab, RunsTheProgramOnACopyOfAnImage) {
  const Tree before = ReadTree(image_.Path());
  const ShellResult result = Run("8000 --documents");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output,
              StartsWith(image_.Path().native() + " from build 8000: migrated, exit status 0\n"));
  EXPECT_THAT(result.output, EndsWith("\n"
                                      "Command:  lab_test_program --update-config 8000\n"
                                      "Ended:    exit status 0\n"
                                      "\n"
                                      "Console: nothing\n"
                                      "\n"
                                      "Files:\n"
                                      "  written\n"
                                      "    /etc/new.json  (0644, 21 bytes)\n"
                                      "  moved\n"
                                      "    /etc/old.conf -> /etc/archive/old.conf\n"
                                      "  removed\n"
                                      "    /etc/gone.conf  (0644, 0 bytes)\n"
                                      "\n"
                                      "/etc/new.json:\n"
                                      "    {\n"
                                      "    \t\"from\" : \"8000\"\n"
                                      "    }\n"
                                      "\n"
                                      "System log:\n"
                                      "    warning lab_test_program: updating from 8000\n"));
  EXPECT_EQ(ReadTree(image_.Path()), before);
}

TEST_F(DeviceLab, RunsTheProgramOnAnArchive) {
  const fs::path archive = folder_ / "image.tar.gz";
  ASSERT_EQ(Shell("tar -C " + image_.Path().native() + " -czf " + archive.native() + " .").status, 0);
  const std::string before = lab_test::ReadFile(archive);
  const ShellResult result = Lab("run " + archive.native() + " --from 8000" + kProgram);
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, StartsWith(archive.native() + " from build 8000: migrated, exit status 0\n"));
  EXPECT_THAT(result.output, HasSubstr("  moved to /etc/archive/: /etc/ old.conf\n"));
  EXPECT_EQ(lab_test::ReadFile(archive), before);
}

TEST_F(DeviceLab, RefusesHostileImages) {
  const fs::path kept = folder_ / "kept";
  fs::resize_file(image_.Path() / "etc/gone.conf", std::uintmax_t{1} << 40);
  const ShellResult giant = Run("8000 --keep " + kept.native());
  EXPECT_EQ(giant.status, 1);
  EXPECT_EQ(giant.output,
            "devicelab: " + image_.Path().native() + " holds more than 67108864 bytes unpacked\n");
  EXPECT_FALSE(fs::exists(kept)) << "there is nothing to keep";
  EXPECT_EQ(Run("8000 --max-megabytes 1").output,
            "devicelab: " + image_.Path().native() + " holds more than 1048576 bytes unpacked\n");
  fs::resize_file(image_.Path() / "etc/gone.conf", 0);
  fs::create_symlink("../../outside", image_.Path() / "link");
  EXPECT_THAT(Run("8000").output, HasSubstr("has a link that leads out of it: /link -> ../../outside"));
}

TEST_F(DeviceLab, PrintsOneJsonObject) {
  const ShellResult result = Run("8000 --json");
  EXPECT_EQ(result.status, 0);
  const Json::Value json = testing_support::ParseJson(result.output);
  EXPECT_EQ(json["schema"], 1);
  EXPECT_EQ(json["outcome"], "migrated");
  EXPECT_EQ(json["files"]["moved"][0]["to"], "/etc/archive/old.conf");
  EXPECT_NE(Run("8000 --json --documents").status, 0);
}

TEST_F(DeviceLab, KeepsADeviceForItsOwnerOnlyAndTellsSo) {
  const fs::path kept = folder_ / "kept";
  const ShellResult result = Run("8000 --keep " + kept.native());
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("devicelab: the device is kept in " + kept.native() +
                                       ", with the household's secrets\n"));
  EXPECT_EQ(fs::status(kept).permissions(), fs::perms::owner_all);
  EXPECT_EQ(lab_test::ReadFile(kept / "etc/archive/old.conf"), "old=1\n");
  EXPECT_FALSE(fs::exists(kept / "etc/gone.conf"));
  const ShellResult again = Run("8000 --keep " + kept.native());
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.output, "devicelab: the folder " + kept.native() + " is not empty\n");
  EXPECT_EQ(Run("8000 --keep /no/folder").status, 1);
}

TEST_F(DeviceLab, ShowsSecretsOfAnImageToThoseWhoAskOnly) {
  image_.Write("usr/kelp/etc/secret.key", "0011aabb\n");
  image_.Write("usr/kelp/etc/wifi/wifi_wps", "wps_ap_pin=12345670\n");
  const std::string show = "show " + image_.Path().native();
  EXPECT_THAT(Lab(show).output,
              ::testing::AllOf(HasSubstr("wps_ap_pin=********\n"), HasSubstr("    ********\n")));
  EXPECT_THAT(Lab(show).output,
              ::testing::Not(::testing::AnyOf(HasSubstr("12345670"), HasSubstr("0011aabb"))));
  EXPECT_THAT(Lab(show + " --show-secrets").output,
              ::testing::AllOf(HasSubstr("wps_ap_pin=12345670\n"), HasSubstr("    0011aabb\n")));
}

TEST_F(DeviceLab, ShowsAnImageWithoutItsPeople) {
  image_.Write("usr/kelp/etc/wifi/wifi_ap_02:AA:00:00:00:01", "ssid=SG9tZQ==\npassword=swordfish\n");
  image_.Write("proc/sys/kernel/kelp_mac_address4", "02aa00000001\n");
  image_.Write("etc/hostapd/mac_filter/mf_deny.conf", "[Attic]\ndesc=TV\nmac=02-aa-00-00-00-02\n");
  const std::string output = Lab("show " + image_.Path().native() + " --anonymous").output;
  for (const char* personal : {"02:AA", "02aa", "02-aa", "SG9tZQ", "Attic", "TV", "swordfish"}) {
    EXPECT_EQ(output.find(personal), std::string::npos) << personal;
  }
  EXPECT_THAT(output, ::testing::ContainsRegex("    ssid=ssid-[0-9a-f]*\n    password=[*]*\n"));
}

TEST_F(DeviceLab, HasNoColoursWhereNoTerminalIs) {
  EXPECT_EQ(Run("8000").output.find('\x1b'), std::string::npos);
}

TEST_F(DeviceLab, FailsWhereTheReportCannotBeWritten) {
  const std::string run = "run " + image_.Path().native() + " --from 8000" + kProgram;
  for (const char* form : {"", " --json", " --documents"}) {
    EXPECT_NE(Lab(run + form + " > /dev/full").status, 0) << form;
  }
}

TEST_F(DeviceLab, FailsAsTheProgramDoes) {
  const ShellResult failed = Run("bad");
  EXPECT_EQ(failed.status, 3);
  EXPECT_THAT(failed.output, HasSubstr(": failed, exit status 3\n  no update from bad\n"));
  const ShellResult crashed = Run("crash");
  EXPECT_EQ(crashed.status, 128 + 11);
  EXPECT_THAT(crashed.output, HasSubstr("killed by signal 11"));
}

TEST_F(DeviceLab, PassesTheBuildNumberOnAsTyped) {
  EXPECT_THAT(Lab("run " + image_.Path().native() + " --from=-5x" + kProgram).output,
              HasSubstr("updating from -5x"));
}

TEST_F(DeviceLab, RunsTheProgramBesideItByDefault) {
  const fs::path lab = folder_ / "devicelab";
  const std::string command = lab.native() + " run " + image_.Path().native() + " --from 1";
  fs::copy_file(DEVICELAB, lab);
  EXPECT_EQ(Shell(command).output, "devicelab: there is no program " +
                                       (folder_ / "kelpwifiupdater").native() +
                                       ": build it, or name another with --program\n");
  fs::copy_file(TEST_PROGRAM, folder_ / "kelpwifiupdater");
  EXPECT_THAT(Shell(command).output, HasSubstr(" from build 1: migrated, exit status 0\n"));
}

TEST_F(DeviceLab, LeavesTheCurrentFolderAndTheTemporaryFolderAlone) {
  const TemporaryFolder temporary;
  EXPECT_EQ(Shell("cd " + folder_.Path().native() + " && TMPDIR=" + temporary.Path().native() + " " +
                  DEVICELAB + " run " + image_.Path().native() + " --from 1" + kProgram)
                .status,
            0);
  EXPECT_TRUE(fs::is_empty(folder_.Path()));
  EXPECT_TRUE(fs::is_empty(temporary.Path()));
}

TEST_F(DeviceLab, TellsWhatIsMissing) {
  EXPECT_EQ(Lab("run /no/image --from 1").output, "devicelab: there is no device image /no/image\n");
  EXPECT_THAT(Lab("run /etc/passwd --from 1" + kProgram).output,
              StartsWith("devicelab: /etc/passwd is no folder, and cannot be read as a tar archive: "));
  EXPECT_EQ(Lab("show /no/image").output, "devicelab: there is no device image /no/image\n");
  EXPECT_EQ(Lab("run /no/image --from 1").status, 1);
  EXPECT_THAT(Lab("run " + image_.Path().native()).output, HasSubstr("--from is required"));
  EXPECT_NE(Lab("").status, 0);
}

TEST_F(DeviceLab, TellsItsCommandsToWhoNamesNone) {
  EXPECT_EQ(Lab("").output,
            "devicelab: name a command: run, explain, fleet, summary, compare, new, show, describe, seal, "
            "bootenv; --help "
            "tells more\n");
  EXPECT_EQ(Lab("migrate x").output,
            "devicelab: there is no command migrate: run, explain, fleet, summary, compare, new, show, "
            "describe, seal, "
            "bootenv; --help tells more\n");
  EXPECT_EQ(Lab("migrate x").status, 1);
}

TEST_F(DeviceLab, TellsItsVersion) {
  const ShellResult result = Lab("--version");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, ::testing::MatchesRegex("devicelab [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(DeviceLab, FailsWhenItCannotPrintWhatItHasToSay) {
  const std::string image = image_.Path().native();
  for (const std::string& command :
       {"run " + image + " --from 8000" + kProgram, "show " + image, std::string("--help")}) {
    const ShellResult result = Lab(command + " >/dev/full");
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_EQ(result.output, "devicelab: cannot print all that there is to say\n") << command;
  }
}

/// A run of devicelab as a process of its own, with a temporary folder of its own.
class DeviceLabProcess : public DeviceLab {
 protected:
  ~DeviceLabProcess() override {
    if (lab_ > 0) End(SIGKILL);
  }

  void Start(const std::string& build) {
    std::array<int, 2> ends{};
    Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
    report_ = Descriptor(ends[0]);
    const Descriptor writing(ends[1]);
    lab_ = Checked(::fork(), "fork", "");
    if (lab_ != 0) return;
    // What runs the tests in the background, or with nohup(1), has some of them ignored.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) ::signal(signal, SIG_DFL);
    ::dup2(writing.Get(), STDOUT_FILENO);
    ::setenv("TMPDIR", temporary_.Path().c_str(), 1);
    ::execl(DEVICELAB, DEVICELAB, "run", image_.Path().c_str(), "--from", build.c_str(), "--program",
            TEST_PROGRAM, "--trust-program", "--documents",
            nullptr);  // with which a report may be more than a pipe takes
    ::_exit(127);
  }

  /// The status as waitpid(2) gives it.
  int End(int signal) {
    const pid_t pid = std::exchange(lab_, -1);
    if (pid <= 0) throw std::logic_error("devicelab has not been started");
    ::kill(pid, signal);
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status;
  }

  /// The program that devicelab runs, as soon as it does.
  pid_t AwaitProgram() const {
    pid_t program = -1;
    AwaitThat([&] {
      program = FindProgram();
      return program > 0;
    });
    // To kill process -1 is to kill everything on the machine.
    if (program <= 0) throw std::runtime_error("devicelab has not started the program");
    return program;
  }

  static bool IsAlive(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/stat");
    std::string number;
    std::string name;
    std::string state;
    return status >> number >> name >> state && state != "Z" && state != "X";
  }

  static bool HasNothing(const TemporaryFolder& folder) { return fs::is_empty(folder.Path()); }

  static bool HasNoFile(const TemporaryFolder& folder) {
    return std::ranges::all_of(
        fs::recursive_directory_iterator(folder.Path()), [](const fs::directory_entry& entry) {
          return entry.is_directory() && entry.path().filename().native().starts_with("devicelab-guarded.");
        });
  }

  static void AwaitThat(const std::function<bool()>& condition) {
    for (int i = 0; i < 3000; ++i) {
      if (condition()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    FAIL() << "waited in vain";
  }

  TemporaryFolder temporary_;
  pid_t lab_ = -1;
  Descriptor report_;

 private:
  /// A process below devicelab that has become the program.
  pid_t FindProgram() const {
    std::set<pid_t> of_lab{lab_};
    for (const auto& entry : fs::directory_iterator("/proc")) {
      std::ifstream stat(entry.path() / "stat");
      pid_t pid = 0;
      std::string name;
      std::string state;
      pid_t parent = 0;
      if (!(stat >> pid >> name >> state >> parent) || !of_lab.contains(parent)) continue;
      if (name == "(lab_test_progra)") return pid;
      of_lab.insert(pid);
    }
    return -1;
  }
};

TEST_F(DeviceLabProcess, LeavesNothingBehindWhateverEndsIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGKILL}) {
    Start("wait");
    const pid_t program = AwaitProgram();
    EXPECT_TRUE(IsPlainWay() || HasNothing(temporary_)) << "others see the device's files during the run";
    const int status = End(signal);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << signal << ' ' << status;
    AwaitThat([&] { return !IsAlive(program); });
    AwaitThat([&] { return !IsPlainWay() || HasNothing(temporary_); });
    EXPECT_TRUE(HasNothing(temporary_)) << signal;
  }
}

TEST_F(DeviceLabProcess, LeavesNothingBehindWhenTheProgramIsKilled) {
  Start("wait");
  ::kill(AwaitProgram(), SIGKILL);
  EXPECT_THAT(ReadAll(report_.Get(), "the report"), HasSubstr("killed by signal 9"));
  const int status = End(0);
  EXPECT_EQ(WEXITSTATUS(status), 128 + SIGKILL);
  EXPECT_TRUE(fs::is_empty(temporary_.Path()));
}

// Who reads a report page by page has it open for hours.
TEST_F(DeviceLabProcess, HasNothingOfTheDeviceLeftWhenItPrintsTheReport) {
  Start("much");
  pollfd report{report_.Get(), POLLIN, 0};
  ASSERT_EQ(::poll(&report, 1, 60'000), 1);
  if (!IsPlainWay()) {
    EXPECT_TRUE(fs::is_empty("/proc/" + std::to_string(lab_) + "/root/sys"));
  }
  EXPECT_TRUE(HasNoFile(temporary_));
  report_.Close();
  const int status = End(0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) << status;
}

TEST_F(DeviceLab, ShowsAnImage) {
  const ShellResult result = Lab("show " + image_.Path().native());
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "/etc/archive/.keep  (0644, 0 bytes)\n"
            "/etc/gone.conf  (0644, 0 bytes)\n"
            "/etc/old.conf  (0644, 6 bytes)\n"
            "\n"
            "/etc/old.conf:\n"
            "    old=1\n");
  const std::string archive = (folder_ / "image.tar").native();
  ASSERT_EQ(Shell("tar -C " + image_.Path().native() + " -cf " + archive + " .").status, 0);
  EXPECT_EQ(Lab("show " + archive).output, result.output);
}

TEST_F(DeviceLab, SealsSecrets) {
  folder_.Write("key", std::string(64, 'a') + "\n");
  const ShellResult result = Lab("seal --key-file " + (folder_ / "key").native() + " 'two words'");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output.size(), 68U + 1U);  // base64 of 24 + 16 + 9 bytes, and a line end
  EXPECT_EQ(Lab("seal --key-file /no/key x").output, "devicelab: cannot read /no/key\n");
  EXPECT_EQ(Lab("seal --key-file /dev/null x").output, "devicelab: a secret key is 64 hexadecimal digits\n");
}

TEST_F(DeviceLab, WritesBootEnvironments) {
  const std::string path = (folder_ / "env").native();
  const ShellResult result = Lab("bootenv --size 16384 " + path + " usb3_disable=1 'bootcmd=run a=b'");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "Wrote " + path +
                               ". On the device, /etc/fw_env.config names it in the line\n"
                               "<its path> 0x0 0x4000\n");
  EXPECT_EQ(lab_test::ReadFile(path),
            BootEnvironment({{"usb3_disable", "1"}, {"bootcmd", "run a=b"}}, 16384));
  EXPECT_EQ(Lab("bootenv --size 64 /no/folder/env").output, "devicelab: cannot write /no/folder/env\n");
  EXPECT_THAT(Lab("bootenv --size 64 " + path + " novalue").output, HasSubstr("(name=value): novalue"));
  EXPECT_THAT(Lab("bootenv --size 8 " + path + " a=1").output, HasSubstr("need 1 bytes more"));
}

TEST_F(DeviceLab, WritesTheCopiesOfRedundantBootEnvironments) {
  const std::string path = (folder_ / "env").native();
  EXPECT_EQ(Lab("bootenv --size 64 --flag 3 " + path + " a=1").status, 0);
  EXPECT_EQ(lab_test::ReadFile(path), RedundantBootEnvironment({{"a", "1"}}, 64, 3));
  EXPECT_NE(Lab("bootenv --size 64 --flag 256 " + path + " a=1").status, 0);
}

TEST_F(DeviceLab, RunsAsAnOrdinaryUser) {
  if (!testing_support::MayBecomeOrdinaryUser()) GTEST_SKIP() << "needs root of the host";
  const std::string reason = testing_support::AsOrdinaryUser([] {
    if (::access(TEST_PROGRAM, X_OK) != 0) return std::string("the build folder is not for others");
    return WhyNotPossible().value_or("");
  });
  if (!reason.empty()) GTEST_SKIP() << reason;
  const ShellResult result =
      Shell("setpriv --reuid 65534 --regid 65534 --clear-groups --bounding-set=-all " +
            std::string(DEVICELAB) + " run " + image_.Path().native() + " --from 8000" + kProgram);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("  moved to /etc/archive/: /etc/ old.conf\n"));
}

}  // namespace
}  // namespace lab
