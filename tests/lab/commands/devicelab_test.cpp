#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "lab/images/boot_environment.h"
#include "lab/images/namespaces.h"
#include "lab/images/tree.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::TemporaryFolder;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing_support::Shell;
using testing_support::ShellResult;

/// A device image and a folder for everything else.
class DeviceLab : public ::testing::Test {
 protected:
  DeviceLab() {
    image_.Write("etc/old.conf", "old=1\n");
    image_.Write("etc/gone.conf", "");
    image_.Write("etc/archive/.keep", "");
  }

  static ShellResult Lab(const std::string& arguments) {
    return Shell(std::string(DEVICELAB) + " " + arguments);
  }

  ShellResult Run(const std::string& build) const {
    return Lab("run " + image_.Path().native() + " --from " + build + " --program " + TEST_PROGRAM);
  }

  TemporaryFolder image_;
  TemporaryFolder folder_;
};

TEST_F(DeviceLab, RunsTheProgramOnACopyOfAnImage) {
  const Tree before = ReadTree(image_.Path());
  const ShellResult result = Run("8000");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
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
            "    warning lab_test_program: updating from 8000\n");
  EXPECT_EQ(ReadTree(image_.Path()), before);
}

TEST_F(DeviceLab, FailsAsTheProgramDoes) {
  const ShellResult failed = Run("bad");
  EXPECT_EQ(failed.status, 3);
  EXPECT_THAT(failed.output,
              HasSubstr("Ended:    exit status 3\n\nStandard error:\n    no update from bad\n"));
  const ShellResult crashed = Run("crash");
  EXPECT_EQ(crashed.status, 128 + 11);
  EXPECT_THAT(crashed.output, HasSubstr("killed by signal 11"));
}

TEST_F(DeviceLab, PassesTheBuildNumberOnAsTyped) {
  EXPECT_THAT(Lab("run " + image_.Path().native() + " --from=-5x --program " + TEST_PROGRAM).output,
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
  EXPECT_THAT(Shell(command).output, StartsWith("Command:  kelpwifiupdater --update-config 1\n"));
}

TEST_F(DeviceLab, LeavesTheCurrentFolderAndTheTemporaryFolderAlone) {
  const TemporaryFolder temporary;
  EXPECT_EQ(Shell("cd " + folder_.Path().native() + " && TMPDIR=" + temporary.Path().native() + " " +
                  DEVICELAB + " run " + image_.Path().native() + " --from 1 --program " + TEST_PROGRAM)
                .status,
            0);
  EXPECT_TRUE(fs::is_empty(folder_.Path()));
  EXPECT_TRUE(fs::is_empty(temporary.Path()));
}

TEST_F(DeviceLab, TellsWhatIsMissing) {
  EXPECT_EQ(Lab("run /no/image --from 1").output, "devicelab: there is no device image /no/image\n");
  EXPECT_EQ(Lab("run /etc/passwd --from 1").output,
            "devicelab: /etc/passwd is no device image: that is a folder with a device's files in it\n");
  EXPECT_EQ(Lab("show /no/image").output, "devicelab: there is no device image /no/image\n");
  EXPECT_EQ(Lab("run /no/image --from 1").status, 1);
  EXPECT_THAT(Lab("run " + image_.Path().native()).output, HasSubstr("--from is required"));
  EXPECT_NE(Lab("").status, 0);
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
  const ShellResult result = Shell("setpriv --reuid 65534 --regid 65534 --clear-groups --bounding-set=-all " +
                                   std::string(DEVICELAB) + " run " + image_.Path().native() +
                                   " --from 8000 --program " + TEST_PROGRAM);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("/etc/old.conf -> /etc/archive/old.conf"));
}

}  // namespace
}  // namespace lab
