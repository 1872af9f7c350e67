// What kelp-first-boot does at a boot that nothing breaks, in the shells that devices have.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/first_boot/booted_device.h"

namespace first_boot {
namespace {

using ::testing::IsEmpty;

class FirstBoot : public ::testing::TestWithParam<Shell> {
 protected:
  void SetUp() override {
    if (!IsThere(GetParam())) GTEST_SKIP() << "this machine has no busybox";
  }
};
INSTANTIATE_TEST_SUITE_P(Shells, FirstBoot, ::testing::Values(Shell::Dash, Shell::Busybox),
                         [](const auto& shell) { return shell.param == Shell::Dash ? "dash" : "busybox"; });

lab::Tree MigratedHousehold(std::string_view name, std::string_view old_build, const std::string& build) {
  lab::PrivateRoot device = Upgraded(name, old_build);
  return Household(Migrate(device, build).after);
}

TEST_P(FirstBoot, DeviceThatWasNeverUpgradedIsLeftAlone) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "");
  device.Remove(kOldBuild);
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(boot.before, boot.after), IsEmpty());
}

TEST_P(FirstBoot, EmptyBuildFileCountsAsNone) {
  for (const char* text : {"", "\n", "  \t \n"}) {
    lab::PrivateRoot device = Upgraded("dual-band-standalone", text);
    const lab::RunResult boot = Boot(device, GetParam());
    ExpectQuiet(boot);
    EXPECT_THAT(Differing(boot.before, boot.after), IsEmpty());
  }
}

// A power cut may come between the last word and the tidying.
TEST_P(FirstBoot, LeftoversOfAnAttemptThatHadItsLastWordGoAtTheNextBoot) {
  for (const char* left : {"before", "room"}) {
    SCOPED_TRACE(left);
    lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000");
    ExpectQuiet(Boot(device, GetParam()));
    const lab::Tree tidy = device.Snapshot();
    device.Write(kState + "/" + left, "end\n");
    device.Write(kState + "/word.failed", "failed 1 8000\n");
    device.Write("/usr/kelp/etc/wifi/wps.json.new", "half a document");
    ExpectQuiet(Boot(device, GetParam()));
    EXPECT_THAT(Differing(tidy, device.Snapshot()), IsEmpty());
  }
}

TEST_P(FirstBoot, MigratesOnceAfterAnUpgrade) {
  for (const char* text : {"8000", "8000\n", " 8000 \nanother line\n", "8000\r\n", "8000 \t\r\n"}) {
    SCOPED_TRACE(text);
    lab::PrivateRoot device = Upgraded("dual-band-standalone", text);
    const lab::RunResult boot = Boot(device, GetParam());
    ExpectQuiet(boot);
    EXPECT_THAT(Differing(Household(boot.after), MigratedHousehold("dual-band-standalone", text, "8000")),
                IsEmpty());
    EXPECT_EQ(Result(device), "migrated 1 8000\n");

    ExpectQuiet(Boot(device, GetParam(), "program=called_again\ncalled_again() { : >/tmp/called-again; }\n"));
    EXPECT_FALSE(device.Exists("/tmp/called-again"));
  }
}

TEST_P(FirstBoot, FolderInTheBuildFilesPlaceCountsAsNone) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "");
  device.Remove(kOldBuild);
  device.MakeDirectory(kOldBuild);
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(boot.before, boot.after), IsEmpty());
}

TEST_P(FirstBoot, BuildThatIsNoNumberIsReported) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "\x81\xff\\ $(:) `'\"*\n");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
  EXPECT_EQ(Result(device), "failed 1 \x81\xff\\ $(:) `'\"*\nFailed to update config, error: stoi\n");
}

TEST_P(FirstBoot, GivesTheBuildAsItStands) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "9999-rc2 of spring\n");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.after), Household(boot.before)),
              IsEmpty());  // nothing is to be converted from there
  EXPECT_EQ(Result(device), "nothing-to-do 1 9999-rc2 of spring\n");
}

// With no tool to be found and with no record of what it opens but two files: nothing else is started or
// read.
TEST_P(FirstBoot, UsualBootReadsTwoFilesAndStartsNothing) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  Boot(device, GetParam());
  lab::RunOptions recorded;
  recorded.wrapper = {"/usr/bin/strace", "-f", "-o", "/tmp/record", "-e", "trace=openat,open,process"};
  const lab::RunResult boot = Boot(device, GetParam(), "PATH=/nowhere program=/nowhere/program\n", recorded);
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
  EXPECT_EQ(Result(device), "migrated 1 8000\n");

  std::istringstream record(boot.after.at("/tmp/record").content);
  std::string opened;
  int started = 0;
  for (std::string line; std::getline(record, line);) {
    if (line.find("clone") != std::string::npos || line.find("fork") != std::string::npos) ++started;
    const std::size_t path = line.find("\"/usr/kelp/");
    if (path != std::string::npos) opened += line.substr(path, line.find('"', path + 1) + 1 - path) + "\n";
  }
  EXPECT_EQ(started, 0);
  EXPECT_EQ(opened, "\"" + kOldBuild + "\"\n\"" + kResult + "\"\n");
}

TEST_P(FirstBoot, FailureIsLeftForTheDeviceToReportAndNotRepeated) {
  lab::PrivateRoot device = Upgraded("failing-archive", "8000\n");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.after), MigratedHousehold("failing-archive", "8000\n", "8000")),
              IsEmpty());
  const std::string result = Result(device);
  EXPECT_EQ(result.find("failed 1 8000\nFailed to update config, error: filesystem error: cannot rename"), 0U)
      << result;

  const lab::RunResult next = Boot(device, GetParam(), "program=/nowhere/program\n");
  ExpectQuiet(next);
  EXPECT_THAT(Differing(Household(next.after), Household(boot.after)), IsEmpty());
  EXPECT_EQ(Result(device), result);
}

TEST_P(FirstBoot, MissingProgramIsReported) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  const lab::RunResult boot = Boot(device, GetParam(), "program=/usr/sbin/nothing\n");
  ExpectQuiet(boot);
  EXPECT_EQ(Result(device), "failed 1 8000\ncannot run /usr/sbin/nothing\n");
  EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
}

// A shell takes the first for a script without a command, which ends well.
TEST_P(FirstBoot, ProgramThatCannotBeRunIsReported) {
  for (const mode_t mode : {0755U, 0644U}) {
    lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
    device.Write("/usr/sbin/unfit", mode == 0755 ? "" : "exit 0\n", mode);
    const lab::RunResult boot = Boot(device, GetParam(), "program=/usr/sbin/unfit\n");
    ExpectQuiet(boot);
    EXPECT_EQ(Result(device).find("failed 1 8000\ncannot run /usr/sbin/unfit"), 0U) << Result(device);
    EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
  }
}

TEST_P(FirstBoot, NextUpgradeCountsAnew) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  Boot(device, GetParam());
  device.Write(kOldBuild, "9300\n");
  ExpectQuiet(Boot(device, GetParam()));
  EXPECT_EQ(Result(device), "nothing-to-do 1 9300\n");
}

TEST_P(FirstBoot, UpgradeFromGeneration13) {
  lab::PrivateRoot device = Upgraded("release-13-mesh", "9000");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.after), MigratedHousehold("release-13-mesh", "9000", "9000")),
              IsEmpty());
  EXPECT_EQ(Result(device), "migrated 1 9000\n");
}

// The documents that the household changes afterwards stay when the end of the run could not be recorded.
TEST_P(FirstBoot, FinishedRunWithoutRecordIsNotUndone) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  Boot(device, GetParam(),
       "program=migrate\n"
       "migrate() { /usr/sbin/kelpwifiupdater \"$@\"; : >/tmp/migrated; }\n"
       "mv() { [ ! -e /tmp/migrated ] && command mv \"$@\"; }\n");
  EXPECT_EQ(Result(device), "running 1 8000\n");
  device.Write(kWifi + "global.json", "changed");
  ExpectQuiet(Boot(device, GetParam()));
  EXPECT_EQ(device.Read(kWifi + "global.json"), "changed");
  EXPECT_EQ(Result(device).substr(0, 16), "gave-up 1 8000\n" + std::string("/"));
}

TEST_P(FirstBoot, BrokenRunIsRepeatedTwice) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  const std::string breaks =
      "program=break_off\n"
      "break_off() { echo once >>/tmp/attempts; /usr/sbin/kelpwifiupdater \"$@\"; return 137; }\n";
  const lab::RunResult boot = Boot(device, GetParam(), breaks);
  ExpectQuiet(boot);
  EXPECT_EQ(device.Read("/tmp/attempts"), "once\nonce\nonce\n");
  EXPECT_EQ(Result(device), "gave-up 3 8000\neach attempt broke off\n");
  EXPECT_THAT(Differing(Household(boot.after), MigratedHousehold("dual-band-standalone", "8000\n", "8000")),
              IsEmpty());

  ExpectQuiet(Boot(device, GetParam(), breaks));
  EXPECT_EQ(device.Read("/tmp/attempts"), "once\nonce\nonce\n");
}

// A power cut in every attempt: three boots try, the fourth gives up.
TEST_P(FirstBoot, PowerCutsCountAsAttempts) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  const std::string cuts =
      "program=cut\n"
      "cut() { echo once >>/tmp/attempts; kill -9 $$; exit; }\n";
  for (const char* result : {"running 1 8000\n", "running 2 8000\n", "running 3 8000\n"}) {
    Boot(device, GetParam(), cuts);
    EXPECT_EQ(Result(device), result);
  }
  ExpectQuiet(Boot(device, GetParam(), cuts));
  EXPECT_EQ(Result(device), "gave-up 3 8000\neach attempt broke off\n");
  EXPECT_EQ(device.Read("/tmp/attempts"), "once\nonce\nonce\n");
}

TEST_P(FirstBoot, DocumentsThatWereThereAreNeverRemoved) {
  for (const char* document : {"global.json", "misc.json"}) {
    lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
    device.Write(kWifi + document, "the household's own", 0600);
    const lab::RunResult boot = Boot(device, GetParam(), "program=break_off\nbreak_off() { return 137; }\n");
    ExpectQuiet(boot);
    EXPECT_THAT(Differing(Household(boot.after), Household(boot.before)), IsEmpty()) << document;
  }
}

// Without the list of what was there nothing can be told from what the run wrote.
TEST_P(FirstBoot, NothingIsRemovedWithoutTheList) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  device.Write(kWifi + "global.json", "whose?", 0600);
  device.Write(kResult, "running 1 8000\n");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.after), Household(boot.before)), IsEmpty());
  EXPECT_EQ(Result(device), "gave-up 1 8000\n" + kState + "/before is gone or not whole\n");
}

// The archive of an earlier migration is not what this run moved: neither a file of a name that is missing,
// nor one of which there is another in its place.
TEST_P(FirstBoot, EarlierArchiveStays) {
  lab::PrivateRoot device = Upgraded("dual-band-standalone", "8000\n");
  device.Write(kWifi + "legacy/wifi_ap_earlier", "earlier");
  device.Write(kWifi + "legacy/mf.info", "earlier");
  device.Write(kWifi + "legacy/wifi_wps", "earlier");
  device.Remove("/etc/hostapd/mac_filter/mf.info");
  const lab::RunResult boot = Boot(device, GetParam(), "program=break_off\nbreak_off() { return 137; }\n");
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.after), Household(boot.before)), IsEmpty());
}

// A power cut keeps no order between the two removals of generation 1.3.
TEST_P(FirstBoot, BrokenBetweenTheRemovalsOfGeneration13) {
  const lab::Tree whole = MigratedHousehold("release-13-mesh", "9000", "9000");
  for (const char* left : {"model.json", "country.json"}) {
    SCOPED_TRACE(left);
    lab::PrivateRoot device = Upgraded("release-13-mesh", "9000");
    const std::string content = device.Read(kWifi + left);
    Boot(device, GetParam(), "program=cut\ncut() { /usr/sbin/kelpwifiupdater \"$@\"; kill -9 $$; exit; }\n");
    device.Write(kWifi + left, content);
    const lab::RunResult boot = Boot(device, GetParam());
    ExpectQuiet(boot);
    EXPECT_THAT(Differing(Household(boot.after), whole), IsEmpty());
    EXPECT_EQ(Result(device), "migrated 2 9000\n");
  }
}

}  // namespace
}  // namespace first_boot
