// Ways in which the script does not come to its end though the power stays on: the boot goes on, the daemon
// starts, and the household changes its settings. No later boot may take those for what a broken run left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/first_boot/booted_device.h"

namespace first_boot {
namespace {

using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string kGlobal = kWifi + "global.json";
const std::string kRadio = kWifi + "radio.json";
const std::string kBootId = "/proc/sys/kernel/random/boot_id";

/// The power went when the program had done all, and before that was recorded.
const std::string kCutBehindTheProgram =
    "program=run\nrun() { /usr/sbin/kelpwifiupdater \"$@\"; kill -9 $$; exit; }\n";

class StoppedFirstBoot : public ::testing::TestWithParam<Shell> {
 protected:
  void SetUp() override {
    if (!IsThere(GetParam())) GTEST_SKIP() << "this machine has no busybox";
  }

  static lab::PrivateRoot Device() { return Upgraded("dual-band-standalone", "8000\n"); }

  /// With it a shell can put something into the background.
  static lab::PrivateRoot DeviceWithBackground() {
    lab::PrivateRoot device = Device();
    device.ProvideFile("/dev/null");
    return device;
  }

  /// What the household sets now stays, at the next boot and at the one behind it.
  static void ExpectLaterSettingsStay(lab::PrivateRoot& device, const std::string& word) {
    device.Write(kGlobal, "set by the household");
    device.Write(kRadio, "set by the household, too");
    for (int boot = 0; boot < 2; ++boot) {
      const lab::RunResult later = Boot(device, GetParam());
      ExpectQuiet(later);
      EXPECT_THAT(Differing(Household(later.before), Household(later.after)), IsEmpty());
      EXPECT_THAT(Result(device), StartsWith(word));
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Shells, StoppedFirstBoot, ::testing::Values(Shell::Dash, Shell::Busybox),
                         [](const auto& shell) { return shell.param == Shell::Dash ? "dash" : "busybox"; });

TEST_P(StoppedFirstBoot, MigratesInTheBackgroundAsWell) {
  lab::PrivateRoot undisturbed = Device();
  const lab::Tree whole = Household(Migrate(undisturbed, "8000").after);
  lab::PrivateRoot device = DeviceWithBackground();
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_EQ(Result(device), "migrated 1 8000\n");
  EXPECT_THAT(Differing(Household(boot.after), whole), IsEmpty());
}

// A device without sleep, or with settings that make it fail: the end of the work is waited for.
TEST_P(StoppedFirstBoot, TimerThatCannotBeSetEndsNothing) {
  lab::PrivateRoot device = DeviceWithBackground();
  ExpectQuiet(Boot(device, GetParam(),
                   "timer() { command sleep 1; }\n"
                   "sleep() { return 127; }\n"
                   "program=run\nrun() { timer; /usr/sbin/kelpwifiupdater \"$@\"; }\n"));
  EXPECT_EQ(Result(device), "migrated 1 8000\n");
}

TEST_P(StoppedFirstBoot, BrokenRunIsRepeatedInTheBackgroundAsWell) {
  lab::PrivateRoot device = DeviceWithBackground();
  ExpectQuiet(Boot(device, GetParam(),
                   "program=break_off\n"
                   "break_off() { echo once >>/tmp/attempts; kill -9 \"$(sh -c 'echo $PPID')\"; }\n"));
  EXPECT_EQ(device.Read("/tmp/attempts"), "once\nonce\nonce\n");
  EXPECT_EQ(Result(device), "gave-up 3 8000\neach attempt broke off\n");
}

TEST_P(StoppedFirstBoot, ProgramThatHangsDoesNotKeepTheDaemonFromStarting) {
  lab::PrivateRoot device = DeviceWithBackground();
  const lab::RunResult boot = Boot(device, GetParam(),
                                   "most_seconds=1 program=hang\n"
                                   "hang() { /usr/sbin/kelpwifiupdater \"$@\"; exec sleep 1000; }\n");
  ExpectQuiet(boot);
  EXPECT_FALSE(boot.timed_out);
  EXPECT_EQ(Result(device), "gave-up 1 8000\nwas stopped, or took more than 1 seconds\n");
  ExpectLaterSettingsStay(device, "gave-up 1 8000\n");
}

// As at an end of the time that systemd gives it, or by hand. With a background the program is not waited
// for; without one it comes to its end first.
TEST_P(StoppedFirstBoot, ScriptThatIsToldToEnd) {
  {
    lab::PrivateRoot device = DeviceWithBackground();
    const lab::RunResult boot =
        Boot(device, GetParam(),
             "program=run\nrun() { /usr/sbin/kelpwifiupdater \"$@\"; kill -TERM $$; exec sleep 1000; }\n");
    ExpectQuiet(boot);
    EXPECT_FALSE(boot.timed_out);
    ExpectLaterSettingsStay(device, "gave-up 1 8000\n");
  }
  {
    lab::PrivateRoot device = Device();
    ExpectQuiet(Boot(device, GetParam(),
                     "program=run\nrun() { /usr/sbin/kelpwifiupdater \"$@\"; kill -TERM $$; }\n"));
    ExpectLaterSettingsStay(device, "gave-up 1 8000\n");
  }
}

// As where a machine has no memory left: once the attempt is on record, what waits for the program is killed.
TEST_P(StoppedFirstBoot, WhatWaitsForTheProgramIsKilled) {
  lab::PrivateRoot device = DeviceWithBackground();
  ExpectQuiet(Boot(
      device, GetParam(),
      "most_seconds=1 flushes=0\n"
      "sync() { flushes=$((flushes + 1)); [ $flushes -lt 6 ] || kill -9 \"$(sh -c 'echo $PPID')\"; }\n"));
  EXPECT_THAT(Result(device), StartsWith("gave-up 1 8000\n"));
  ExpectLaterSettingsStay(device, "gave-up 1 8000\n");
}

// What is left of the attempt behind the boot's back would change the device under the household's hands.
TEST_P(StoppedFirstBoot, NothingOfTheAttemptGoesOnBehindTheBoot) {
  lab::PrivateRoot device = DeviceWithBackground();
  lab::RunOptions and_wait;
  and_wait.wrapper = {"/usr/bin/dash", "-c", "\"$@\"; sleep 3; [ ! -e /tmp/late ]", "dash"};
  const lab::RunResult boot =
      Boot(device, GetParam(), "most_seconds=1 program=hang\nhang() { sleep 2; : >/tmp/late; }\n", and_wait);
  EXPECT_EQ(boot.status, 0) << "the program ran on";
  EXPECT_THAT(Result(device), StartsWith("gave-up 1 8000\n"));
}

// From the end of the time on the storage lets nobody go again.
TEST_P(StoppedFirstBoot, StorageThatHangsWhenTheTimeIsOverKeepsNoBoot) {
  for (const std::string tool : {"sync", "mv"}) {
    SCOPED_TRACE(tool);
    lab::PrivateRoot device = DeviceWithBackground();
    const lab::RunResult boot =
        Boot(device, GetParam(),
             tool + "() { [ ! -e /tmp/over ] || sleep 1000; " + (tool == "sync" ? ":" : "command mv \"$@\"") +
                 "; }\n"
                 "most_seconds=1 program=hang\nhang() { : >/tmp/over; exec sleep 1000; }\n");
    ExpectQuiet(boot);
    EXPECT_FALSE(boot.timed_out) << "the boot waits for a " << tool << " that hangs";
  }
}

// Before the first record, too: what the household sets is not migrated over, however late the storage goes
// on. The word waits for no flush, which may hang because of another file system.
TEST_P(StoppedFirstBoot, StorageThatHangsFromTheBeginning) {
  for (const std::string tool : {"sync", "mv"}) {
    SCOPED_TRACE(tool);
    lab::PrivateRoot device = DeviceWithBackground();
    lab::RunOptions and_goes_on;
    and_goes_on.wrapper = {
        "/usr/bin/dash", "-c",
        "\"$@\"; [ ! -s /usr/kelp/etc/migration/result ] || : >/tmp/at-once\n: >/tmp/back\n"
        "for try in 1 2 3 4 5 6 7 8 9; do\n"
        "  sleep 1; read -r word rest </usr/kelp/etc/migration/result && break\n"
        "done 2>/tmp/not-yet",
        "dash"};
    const lab::RunResult boot =
        Boot(device, GetParam(),
             tool + "() { while [ ! -e /tmp/back ]; do sleep 1; done; " +
                 (tool == "sync" ? ":" : "command mv \"$@\"") + "; }\nmost_seconds=1\n",
             and_goes_on);
    EXPECT_FALSE(boot.timed_out) << "the boot waits for a " << tool << " that hangs";
    EXPECT_EQ(device.Exists("/tmp/at-once"), tool == "sync");
    EXPECT_EQ(Result(device), "gave-up 1 8000\nwas stopped, or took more than 1 seconds\n");
    ExpectLaterSettingsStay(device, "gave-up 1 8000\n");
  }
}

TEST_P(StoppedFirstBoot, ToldToEndWhileItPutsBack) {
  for (const bool has_background : {true, false}) {
    SCOPED_TRACE(has_background);
    lab::PrivateRoot device = has_background ? DeviceWithBackground() : Device();
    Boot(device, GetParam(),
         "program=run\nrun() { /usr/sbin/kelpwifiupdater \"$@\"; return 137; }\n"
         "mv() { case $* in *legacy*) kill -9 $$; while :; do sleep 1; done ;; esac; command mv \"$@\"; }\n");
    ASSERT_EQ(Result(device), "again 2 8000\n");
    ExpectQuiet(Boot(device, GetParam(),
                     "mv() { command mv \"$@\"; case $* in *legacy*) kill -TERM $$ ;; esac; }\n"));
    EXPECT_THAT(Result(device), StartsWith("gave-up 2 8000\n"));
    ExpectLaterSettingsStay(device, "gave-up 2 8000\n");
  }
}

TEST_P(StoppedFirstBoot, PowerCutWhileItPutsBackIsNoAttempt) {
  lab::PrivateRoot device = Device();
  Boot(device, GetParam(), kCutBehindTheProgram);
  for (int cut = 0; cut < 3; ++cut) {
    Boot(device, GetParam(), "mv() { case $* in *legacy*) kill -9 $$; exit ;; esac; command mv \"$@\"; }\n");
    EXPECT_EQ(Result(device), "again 2 8000\n");
  }
  ExpectQuiet(Boot(device, GetParam()));
  EXPECT_EQ(Result(device), "migrated 2 8000\n");
}

TEST_P(StoppedFirstBoot, WhatWasArchivedCannotBePutBack) {
  lab::PrivateRoot device = Device();
  Boot(device, GetParam(), kCutBehindTheProgram);
  ASSERT_EQ(Result(device), "running 1 8000\n");
  const lab::RunResult boot =
      Boot(device, GetParam(), "mv() { case $* in *legacy*) return 1 ;; *) command mv \"$@\" ;; esac; }\n");
  ExpectQuiet(boot);
  EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
  EXPECT_EQ(Result(device), "gave-up 2 8000\ncannot put back what the attempt before did\n");
  ExpectLaterSettingsStay(device, "gave-up 2 8000\n");
}

// No record can be written at the boot behind a broken run: neither can one that the next boot would go by.
TEST_P(StoppedFirstBoot, NoRoomForRecordsBehindABrokenRun) {
  lab::PrivateRoot device = Device();
  Boot(device, GetParam(), kCutBehindTheProgram);
  ExpectQuiet(Boot(device, GetParam(),
                   "mv() { case $* in */migration/*) return 1 ;; *) command mv \"$@\" ;; esac; }\n"));
  EXPECT_EQ(Result(device), "running 1 8000\n");
  ExpectLaterSettingsStay(device, "gave-up ");
}

// The storage takes no more names when the broken run is undone: all is as it was before, and so it stays.
TEST_P(StoppedFirstBoot, NoRoomForRecordsBehindTheUndoing) {
  lab::PrivateRoot device = Device();
  const lab::Tree before = Household(device.Snapshot());
  Boot(device, GetParam(), kCutBehindTheProgram);
  const lab::RunResult boot = Boot(device, GetParam(),
                                   "mv() {\n"
                                   "  case $* in\n"
                                   "    */migration/*) [ ! -e /tmp/full ] || return 1; : >/tmp/full ;;\n"
                                   "  esac\n"
                                   "  command mv \"$@\"\n"
                                   "}\n");
  EXPECT_EQ(boot.status, 0);
  EXPECT_EQ(Result(device), "no-room 2 8000\n");
  EXPECT_THAT(Differing(Household(boot.after), before), IsEmpty());
  ExpectLaterSettingsStay(device, "documents-there 2 8000\n");
}

// Of a list that is not whole cannot be told what was there before.
TEST_P(StoppedFirstBoot, ListThatIsCutShortIsNone) {
  for (const char* left : {"", "\n", "/usr/kelp/etc/wifi/lbd.conf\n", "/usr/kelp/etc/wifi/lbd.conf\nen"}) {
    SCOPED_TRACE(left);
    lab::PrivateRoot device = Device();
    Boot(device, GetParam(), kCutBehindTheProgram);
    device.Write(kState + "/before", left);
    const lab::RunResult boot = Boot(device, GetParam());
    ExpectQuiet(boot);
    EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
    EXPECT_THAT(Result(device), StartsWith("gave-up 1 8000\n"));
  }
}

// The household's documents are told from those of the run without any tool that may be missing.
TEST_P(StoppedFirstBoot, ListIsReadWithoutATool) {
  lab::PrivateRoot device = Device();
  device.Write(kGlobal, "the household's own", 0600);
  ExpectQuiet(
      Boot(device, GetParam(), "grep() { return 127; }\nprogram=break_off\nbreak_off() { return 137; }\n"));
  EXPECT_EQ(device.Read(kGlobal), "the household's own");
}

// To a second call in one boot a run that is at work looks like one that broke off.
TEST_P(StoppedFirstBoot, SecondCallInOneBootDoesNothing) {
  lab::PrivateRoot device = Device();
  device.Write(kBootId, "1f0e-one\n");
  Boot(device, GetParam(), kCutBehindTheProgram);
  const lab::RunResult second = Boot(device, GetParam());
  ExpectQuiet(second);
  EXPECT_THAT(Differing(Household(second.before), Household(second.after)), IsEmpty());
  EXPECT_EQ(Result(device), "running 1 8000\n");

  device.Write(kBootId, "1f0e-two\n");
  ExpectQuiet(Boot(device, GetParam()));
  EXPECT_EQ(Result(device), "migrated 2 8000\n");
  EXPECT_FALSE(device.Exists(kState + "/boot.1f0e-one"));

  device.Write(kBootId, "1f0e-three\n");
  device.Write(kOldBuild, "9300\n");
  ExpectQuiet(Boot(device, GetParam()));
  EXPECT_EQ(Result(device), "nothing-to-do 1 9300\n");
}

TEST_P(StoppedFirstBoot, SettingsThatAreNoShellDoNotFailTheBoot) {
  lab::PrivateRoot device = Device();
  const lab::RunResult boot = Boot(device, GetParam(), "if ( then\n");
  EXPECT_EQ(boot.status, 0);
  EXPECT_NE(boot.err, "");
  EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
}

}  // namespace
}  // namespace first_boot
