// Storage that has not the room for a migration, and what is true behind the program's status 0.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/first_boot/booted_device.h"

namespace first_boot {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Eq;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string kStorage = "/usr/kelp/etc";
const std::string kFilters = "/etc/hostapd";
constexpr std::uintmax_t kPage = 4096;

class FullFirstBoot : public ::testing::TestWithParam<Shell> {
 protected:
  void SetUp() override {
    if (!IsThere(GetParam())) GTEST_SKIP() << "this machine has no busybox";
  }

  /// All that a migration moves lies on one file system, which can be made small.
  static lab::PrivateRoot Device(std::string_view name = "dual-band-standalone") {
    lab::PrivateRoot device = Upgraded(name, "8000\n");
    for (const auto& [path, entry] : device.Snapshot()) {
      if (path.starts_with(kFilters + "/mac_filter/")) {
        device.Write(kStorage + path.substr(4), entry.content, entry.mode);
      }
    }
    device.Remove(kFilters);
    device.Link(kFilters, kStorage + "/hostapd");
    return device;
  }

  static lab::RunOptions WithPages(std::uintmax_t pages) {
    lab::RunOptions small;
    small.tmpfs = {{kStorage, pages * kPage}};
    return small;
  }

  static lab::Tree Whole(lab::PrivateRoot device) { return Household(Migrate(device, "8000").after); }

  /// Of what the script keeps, there is the result alone.
  static void ExpectTidy(const lab::Tree& after, bool with_list = false) {
    for (const auto& [path, entry] : after) {
      if (path.starts_with(kState + "/") && path != kResult && !(with_list && path == kState + "/before")) {
        ADD_FAILURE() << path << " is left";
      }
      if (path.starts_with(kWifi)) {
        EXPECT_FALSE(path.ends_with(".new") || path.find("held") != std::string::npos) << path << " is left";
      }
    }
  }

  /// Says no-room, and has changed nothing.
  void ExpectNoRoom(const lab::RunResult& boot) {
    EXPECT_EQ(boot.status, 0);
    EXPECT_THAT(boot.err, HasSubstr("kelp-first-boot: no-room: "));
    EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
    ExpectTidy(boot.after, true);
  }

  /// A first boot that finds no room for the attempt, but for its word and its list.
  void FindNoRoom(lab::PrivateRoot& device) {
    ExpectNoRoom(
        Boot(device, GetParam(), "mkdir() { case $* in *held*) return 1 ;; esac; command mkdir \"$@\"; }\n"));
  }
};
INSTANTIATE_TEST_SUITE_P(Shells, FullFirstBoot, ::testing::Values(Shell::Dash, Shell::Busybox),
                         [](const auto& shell) { return shell.param == Shell::Dash ? "dash" : "busybox"; });

// With each amount of room all is done or nothing, and with room again all is.
TEST_P(FullFirstBoot, AllOrNothing) {
  const lab::Tree whole = Whole(Device());
  int without_word = 0;
  int refused = 0;
  int done = 0;
  for (std::uintmax_t pages = 12; pages <= 60; pages += 2) {
    SCOPED_TRACE(pages);
    lab::PrivateRoot device = Device();
    lab::RunResult boot;
    try {
      boot = Boot(device, GetParam(), "", WithPages(pages));
    } catch (const std::exception&) {
      continue;  // the device itself does not fit
    }
    if (Result(device) == "migrated 1 8000\n") {
      ++done;
      ExpectQuiet(boot);
      EXPECT_THAT(Differing(Household(boot.after), whole), IsEmpty());
    } else {
      ++(Result(device).empty() ? without_word : refused);
      EXPECT_THAT(Result(device), AnyOf(Eq(""), Eq("no-room 1 8000\n")));
      ExpectNoRoom(boot);
      const lab::RunResult next = Boot(device, GetParam());
      ExpectQuiet(next);
      EXPECT_EQ(Result(device), "migrated 1 8000\n");
      EXPECT_THAT(Differing(Household(next.after), whole), IsEmpty());
      ExpectTidy(next.after);
    }
  }
  EXPECT_GE(without_word, 1);
  EXPECT_LE(without_word, 2);  // what was held for the attempt has room for the word
  EXPECT_GE(refused, 1);
  EXPECT_GE(done, 1);
}

// What is held when the attempt goes on record is enough for its documents, in bytes and in files, on each
// sample.
TEST_P(FullFirstBoot, HoldsWhatTheDocumentsTake) {
  for (const char* name : {"dual-band-standalone", "tri-band-mesh-router", "tri-band-repeater"}) {
    for (const bool has_random : {true, false}) {
      SCOPED_TRACE(name);
      lab::PrivateRoot device = Device(name);
      if (!has_random) device.Remove(kRandom);
      ExpectQuiet(Boot(device, GetParam(),
                       "mv() {\n"
                       "  case $* in *word.running*) cat /usr/kelp/etc/wifi/held*/* >/tmp/held\n"
                       "    ls -A /usr/kelp/etc/wifi/held* >/tmp/files ;; esac\n"
                       "  command mv \"$@\"\n"
                       "}\n"));
      std::size_t documents = 0;
      const lab::Tree after = device.Snapshot();
      for (const auto& [path, entry] : after) {
        if (path.starts_with(kWifi) && path.find(".json") != std::string::npos)
          documents += entry.content.size();
      }
      const std::string held = after.at("/tmp/held").content;
      EXPECT_GE(held.size(), documents + 4096);
      const std::string files = after.at("/tmp/files").content;
      EXPECT_GE(std::count(files.begin(), files.end(), '\n'), 8);
      EXPECT_FALSE(after.contains(kWifi + "held-for-migration"));
      // Neither zeros nor anything that comes again: no block of 16 bytes is there twice in the documents'
      // part.
      std::set<std::string> blocks;
      for (std::size_t at = 4608; at + 16 <= held.size(); at += 16) blocks.insert(held.substr(at, 16));
      EXPECT_EQ(blocks.size(), (held.size() - 4608) / 16);
    }
  }
}

// What was held is taken by somebody else before the program writes.
TEST_P(FullFirstBoot, FailureForWantOfRoomIsPutBack) {
  for (const int already : {0, 2000, 8000}) {
    SCOPED_TRACE(already);
    lab::PrivateRoot device = Device();
    const lab::RunResult boot =
        Boot(device, GetParam(),
             "program=run\n"
             "run() {\n"
             "  head -c " +
                 std::to_string(already) +
                 " /dev/urandom >/usr/kelp/etc/spare\n"
                 "  while head -c 65536 /dev/urandom >>/usr/kelp/etc/filler; do :; done 2>/tmp/full\n"
                 "  rm -f /usr/kelp/etc/spare\n"
                 "  /usr/sbin/kelpwifiupdater \"$@\"\n"
                 "  ended=$?\n"
                 "  rm -f /usr/kelp/etc/filler\n"
                 "  return $ended\n"
                 "}\n",
             WithPages(60));
    EXPECT_EQ(Result(device), "no-room 1 8000\n");
    ExpectNoRoom(boot);
    ExpectQuiet(Boot(device, GetParam()));
    EXPECT_EQ(Result(device), "migrated 1 8000\n");
  }
}

// A folder of records that cannot be made, as on a device that is read-only.
TEST_P(FullFirstBoot, NothingIsBegunWithoutARecord) {
  lab::PrivateRoot device = Device();
  device.Write(kState, "a file where the folder should be");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectNoRoom(boot);
  EXPECT_EQ(std::count(boot.err.begin(), boot.err.end(), '\n'), 1) << boot.err;
}

TEST_P(FullFirstBoot, SaysSoInTheSystemLogAsWell) {
  lab::PrivateRoot device = Device();
  device.ProvideFile("/dev/null");
  device.Write(kState, "a file where the folder should be");
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectNoRoom(boot);
  EXPECT_THAT(boot.log, Contains(Field(&lab::LogLine::message, HasSubstr("no-room: "))));
}

// A word that was prepared for another attempt, and that a power cut left.
TEST_P(FullFirstBoot, OldWordIsNotTakenForThisAttempts) {
  lab::PrivateRoot device = Device();
  device.Write(kState + "/word.no-room", "no-room 1 7000\n");
  FindNoRoom(device);
  EXPECT_EQ(Result(device), "no-room 1 8000\n");
}

// The boot went on without a migration. Which documents count as the household's depends on what was there
// before.
TEST_P(FullFirstBoot, LaterBootBeginsOnlyWhereNoDocumentAppeared) {
  struct Case {
    const char* what;
    const char* there_before;
    const char* appears;
    const char* lost;
    const char* result;
  };
  for (const Case& c : {Case{"none", "", "", "", "migrated"},
                        {"global", "", "global.json", "", "documents-there"},
                        {"misc", "", "misc.json", "", "documents-there"},
                        {"radio", "", "radio.json", "", "documents-there"},
                        {"wps", "", "wps.json", "", "documents-there"},
                        {"network", "", "network.json.bridge", "", "documents-there"},
                        {"a temporary one", "", "network.json.bridge.new", "", "migrated"},
                        {"one was there before", "radio.json", "", "", "migrated"},
                        {"one more than before", "radio.json", "wps.json", "", "documents-there"},
                        {"the list is lost", "radio.json", "", "before", "documents-there"},
                        {"the list is lost, none is there", "", "", "before", "migrated"},
                        {"the record is lost", "", "radio.json", "result", "documents-there"},
                        {"the record is lost, none appeared", "radio.json", "", "result", "migrated"}}) {
    SCOPED_TRACE(c.what);
    lab::PrivateRoot device = Device();
    if (*c.there_before != '\0') device.Write(kWifi + c.there_before, "of an earlier time", 0600);
    FindNoRoom(device);
    ASSERT_EQ(Result(device), "no-room 1 8000\n");
    if (*c.lost != '\0') device.Remove(kState + "/" + c.lost);
    if (*c.appears != '\0') device.Write(kWifi + c.appears, "set by the household", 0600);
    const lab::RunResult boot = Boot(device, GetParam());
    ExpectQuiet(boot);
    EXPECT_EQ(Result(device), std::string(c.result) + " 1 8000\n");
    if (std::string(c.result) == "documents-there") {
      EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
    }
  }
}

// Where not even its word found room there is an empty file, of any build.
TEST_P(FullFirstBoot, EmptyResultIsThatOfALaterBoot) {
  lab::PrivateRoot device = Device();
  device.Write(kResult, "");
  device.Write(kWifi + "radio.json", "set by the household", 0600);
  const lab::RunResult boot = Boot(device, GetParam());
  ExpectQuiet(boot);
  EXPECT_EQ(Result(device), "documents-there 1 8000\n");
  EXPECT_THAT(Differing(Household(boot.before), Household(boot.after)), IsEmpty());
}

// Of generation 1.3 the other documents are that generation's own, and the program overwrites global.json at
// the first boot.
TEST_P(FullFirstBoot, LaterBootOfGeneration13) {
  for (const bool appears : {false, true}) {
    lab::PrivateRoot device = Upgraded("release-13-mesh", "9000");
    device.Remove(kWifi + "radio.json");
    FindNoRoom(device);
    device.Write(kWifi + "radio.json", "of generation 1.3", 0600);
    if (appears) device.Write(kWifi + "global.json", "set by the household", 0600);
    ExpectQuiet(Boot(device, GetParam()));
    EXPECT_EQ(Result(device), appears ? "documents-there 1 9000\n" : "migrated 1 9000\n");
    EXPECT_EQ(device.Read(kWifi + "global.json") == "set by the household", appears);
    EXPECT_EQ(device.Read(kWifi + "radio.json"), "of generation 1.3");
  }
}

TEST_P(FullFirstBoot, WordsBehindStatus0) {
  struct Case {
    const char* what;
    const char* there;
    const char* program;
    const char* result;
  };
  for (const Case& c :
       {Case{"the skip rule", "global.json", "/usr/sbin/kelpwifiupdater \"$@\"", "documents-there 1 8000\n"},
        {"the skip rule by misc.json", "misc.json", "/usr/sbin/kelpwifiupdater \"$@\"",
         "documents-there 1 8000\n"},
        {"an older document that is overwritten", "radio.json", "/usr/sbin/kelpwifiupdater \"$@\"",
         "migrated 1 8000\n"},
        {"nothing written", "", ":",
         "failed 1 8000\nthe program ended with 0, and /usr/kelp/etc/wifi/network.json.* is not there\n"},
        {"one of five missing", "", "/usr/sbin/kelpwifiupdater \"$@\"; rm -f /usr/kelp/etc/wifi/wps.json",
         "failed 1 8000\nthe program ended with 0, and /usr/kelp/etc/wifi/wps.json is not there\n"}}) {
    SCOPED_TRACE(c.what);
    lab::PrivateRoot device = Device();
    if (*c.there != '\0') device.Write(kWifi + c.there, "of an earlier time", 0600);
    const lab::RunResult boot =
        Boot(device, GetParam(), std::string("program=run\nrun() { ") + c.program + "; }\n");
    ExpectQuiet(boot);
    EXPECT_EQ(Result(device), c.result);
    ExpectTidy(boot.after);
  }
}

// A run that is killed leaves a part of a document, with the household's secrets.
TEST_P(FullFirstBoot, NothingIsLeftOfABrokenRun) {
  const std::string torn =
      "{ for f in global misc radio wps; do echo secret >/usr/kelp/etc/wifi/$f.json.new; done;\n"
      "echo secret >/usr/kelp/etc/wifi/network.json.default.new; }";
  for (const std::string& end : {std::string("return 137"), std::string("exec sleep 1000")}) {
    SCOPED_TRACE(end);
    lab::PrivateRoot device = Device();
    device.ProvideFile("/dev/null");
    const lab::RunResult boot =
        Boot(device, GetParam(), "most_seconds=2 program=run\nrun() { " + torn + "; " + end + "; }\n");
    ExpectQuiet(boot);
    EXPECT_THAT(Result(device), ::testing::StartsWith("gave-up "));
    ExpectTidy(boot.after);
  }
}

}  // namespace
}  // namespace first_boot
