// The command that migrates once more, on a device and on a folder that holds one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/first_boot/booted_device.h"
#include "tests/support/child_process.h"

namespace first_boot {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class MigratedAgain : public ::testing::TestWithParam<Shell> {
 protected:
  void SetUp() override {
    if (!IsThere(GetParam())) GTEST_SKIP() << "this machine has no busybox";
  }

  /// A device that has been migrated, with settings of the household's own since.
  lab::PrivateRoot Migrated(std::string_view name) {
    lab::PrivateRoot device = Upgraded(name, "8000\n");
    Boot(device, GetParam());
    device.Write(kWifi + "radio.json", "set by the household", 0600);
    return device;
  }

  void ExpectNothingChanged(const lab::RunResult& run, const std::string& why) {
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr(why));
    EXPECT_THAT(run.err, HasSubstr("Nothing was changed."));
    EXPECT_THAT(Differing(Household(run.before), Household(run.after)), IsEmpty());
  }
};
INSTANTIATE_TEST_SUITE_P(Shells, MigratedAgain, ::testing::Values(Shell::Dash, Shell::Busybox),
                         [](const auto& shell) { return shell.param == Shell::Dash ? "dash" : "busybox"; });

TEST_P(MigratedAgain, BringsTheDeviceToWhereTheMigrationBroughtIt) {
  for (const char* name : {"dual-band-standalone", "tri-band-mesh-router", "tri-band-repeater"}) {
    SCOPED_TRACE(name);
    lab::PrivateRoot undisturbed = Upgraded(name, "8000\n");
    const lab::Tree whole = Household(Migrate(undisturbed, "8000").after);
    lab::PrivateRoot device = Migrated(name);
    const lab::RunResult run = MigrateAgain(device, GetParam());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, HasSubstr("puts back /usr/kelp/etc/wifi/wifi_wps\n"));
    EXPECT_THAT(run.out, HasSubstr("removes /usr/kelp/etc/wifi/radio.json\n"));
    EXPECT_THAT(run.out, HasSubstr("migrated 1 8000\n"));
    EXPECT_THAT(Differing(Household(run.after), whole), IsEmpty());
    ExpectQuiet(Boot(device, GetParam(), "program=/nowhere/program\n"));
    EXPECT_EQ(Result(device), "migrated 1 8000\n");
  }
}

// The failure that the archive of this device ends in would come again without the file.
TEST_P(MigratedAgain, ProvidesWhatTheArchiveAloneNeeds) {
  lab::PrivateRoot device = Migrated("failing-archive");
  ASSERT_THAT(Result(device), StartsWith("failed 1 8000\n"));
  const lab::RunResult run = MigrateAgain(device, GetParam());
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("made /usr/kelp/etc/wifi/lbd.guest.conf, which was missing, empty\n"));
  EXPECT_EQ(Result(device), "migrated 1 8000\n");
  EXPECT_EQ(device.Read(kWifi + "legacy/lbd.guest.conf"), "");
}

TEST_P(MigratedAgain, PowerCutInItIsOneInAFirstBoot) {
  lab::PrivateRoot undisturbed = Upgraded("dual-band-standalone", "8000\n");
  const lab::Tree whole = Household(Migrate(undisturbed, "8000").after);
  for (const char* at : {"*legacy*wifi_ap*", "*word.running*", "*word.migrated*"}) {
    SCOPED_TRACE(at);
    lab::PrivateRoot device = Migrated("dual-band-standalone");
    MigrateAgain(
        device, GetParam(), "",
        std::string("mv() { case $* in ") + at + ") kill -9 $$; exit ;; esac; command mv \"$@\"; }\n");
    ASSERT_FALSE(Result(device).starts_with("migrated "));
    ExpectQuiet(Boot(device, GetParam()));
    EXPECT_THAT(Result(device), StartsWith("migrated "));
    EXPECT_THAT(Differing(Household(device.Snapshot()), whole), IsEmpty());
  }
}

TEST_P(MigratedAgain, LooksBeforeItTouches) {
  {
    lab::PrivateRoot device = Migrated("dual-band-standalone");
    device.Remove(kWifi);
    ExpectNothingChanged(MigrateAgain(device, GetParam()), "there is no /usr/kelp/etc/wifi");
  }
  {
    lab::PrivateRoot device = Migrated("dual-band-standalone");
    device.Remove(kWifi + "legacy");
    device.Remove(kWifi + "wifi_ap_d8:47:32:9a:51:e3");  // no radio's, so it was not archived
    ExpectNothingChanged(MigrateAgain(device, GetParam()), "there is no access point's legacy file");
  }
  {
    lab::PrivateRoot device = Migrated("dual-band-standalone");
    device.Remove(kOldBuild);
    device.Remove(kState);
    ExpectNothingChanged(MigrateAgain(device, GetParam()), "which build was installed before?");
    EXPECT_EQ(MigrateAgain(device, GetParam(), "8000").status, 0);
  }
  {
    lab::PrivateRoot device = Migrated("dual-band-standalone");
    ExpectNothingChanged(MigrateAgain(device, GetParam(), "9300"),
                         "from build 9300 nothing is to be migrated");
    device.Write(kResult, "running 1 8000\n");
    ExpectNothingChanged(MigrateAgain(device, GetParam()), "the next boot ends it");
    device.Remove(kState);
    device.Write(kState, "a file where the folder should be");
    ExpectNothingChanged(MigrateAgain(device, GetParam()), "cannot write to /usr/kelp/etc/migration");
  }
  for (const char* wrong : {"--help-me", "--root", "8000 8001"}) {
    lab::PrivateRoot device = Migrated("dual-band-standalone");
    const lab::RunResult run = MigrateAgain(device, GetParam(), wrong);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(Differing(run.before, run.after), IsEmpty());
  }
}

TEST_P(MigratedAgain, SaysWhatOfGeneration13CannotBeUndone) {
  lab::PrivateRoot device = Upgraded("release-13-mesh", "9000\n");
  const lab::RunResult first = MigrateAgain(device, GetParam());
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_THAT(first.out, HasSubstr("keeps no copy"));
  EXPECT_EQ(Result(device), "migrated 1 9000\n");
  ExpectNothingChanged(MigrateAgain(device, GetParam()), "cannot be undone");
}

/// The command on a folder of this machine.
class PreparedFolder : public ::testing::Test {
 protected:
  PreparedFolder() : image_(Upgraded("failing-archive", "8000\n")), outside_(lab::PrivateRoot::Bare{}) {
    Migrate(image_, "8000");
    outside_.Write("/mac_filter/mf.info", "not of the image");
    outside_.Write("/global.json", "not of the image");
  }

  testing_support::ShellResult Prepare() const {
    return testing_support::Shell(KELP_MIGRATE_AGAIN " --root '" + image_.Path().string() + "' 2>&1");
  }

  void ExpectRefused(const std::string& why) {
    const lab::Tree before = image_.Snapshot();
    const lab::Tree other = outside_.Snapshot();
    const auto result = Prepare();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr(why));
    EXPECT_THAT(Differing(image_.Snapshot(), before), IsEmpty());
    EXPECT_THAT(Differing(outside_.Snapshot(), other), IsEmpty());
  }

  lab::PrivateRoot image_;
  lab::PrivateRoot outside_;
};

TEST_F(PreparedFolder, IsWhatTheMigrationBeganWith) {
  lab::PrivateRoot fresh = Upgraded("failing-archive", "8000\n");
  fresh.Write(kWifi + "lbd.guest.conf", "");
  const auto result = Prepare();
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("prepared "));
  EXPECT_THAT(Differing(Household(image_.Snapshot()), Household(fresh.Snapshot())), IsEmpty());
  EXPECT_EQ(Migrate(image_, "8000").status, 0);
}

TEST_F(PreparedFolder, NoLinkLeadsOutOfIt) {
  image_.Remove("/etc/hostapd");
  image_.Link("/etc/hostapd", outside_.Path().string());
  ExpectRefused("leads out of");
  image_.Remove("/etc/hostapd");
  image_.MakeDirectory("/etc/hostapd");
  image_.Link("/etc/hostapd/mac_filter", "/nowhere/at-all");
  ExpectRefused("is no folder");
  image_.Remove("/etc/hostapd/mac_filter");
  image_.Remove(kWifi + "legacy");
  image_.Link(kWifi + "legacy", outside_.Path().string() + "/mac_filter");
  ExpectRefused("leads out of");
  image_.Remove(kWifi);
  image_.Link("/usr/kelp/etc/wifi", outside_.Path().string());
  ExpectRefused("leads out of");
}

}  // namespace
}  // namespace first_boot
