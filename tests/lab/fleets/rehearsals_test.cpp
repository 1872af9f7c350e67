#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/fleets/compare.h"
#include "lab/fleets/fleet.h"
#include "lab/images/tar_text.h"
#include "lab/runs/pool_worker.h"
#include "tests/support/temporary_folder.h"

namespace lab::fleets {
namespace {

namespace fs = std::filesystem;
using lab_test::TemporaryFolder;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string kSample = std::string(KELP_SOURCE) + "/devices/dual-band-standalone";

/// Rehearses devices in a worker.
class Rehearsals : public ::testing::Test {
 protected:
  Record Rehearse(const DeviceSource& source) const {
    PoolWorker worker(
        [&](const std::string&) { return RecordLine(DeviceRehearsal(options_).Rehearse(source)); });
    worker.Send("go");
    while (true) {
      if (const auto answer = worker.Receive()) return ParseRecord(*answer).value();
    }
  }

  TemporaryFolder folder_;
  RehearsalOptions options_{.program = KELP_PROGRAM, .limit = std::chrono::seconds(60)};
};

TEST_F(Rehearsals, TellWhatBecameOfADevice) {
  const Record record = Rehearse({kSample, "8000", {}, {}});
  EXPECT_EQ(record.image, kSample);
  EXPECT_EQ(record.from, "8000");
  EXPECT_EQ(record.outcome, Outcome::Migrated) << record.error;
  EXPECT_EQ(record.status, 0);
  EXPECT_EQ(record.signal, std::nullopt);
  EXPECT_EQ(record.error, "");
  EXPECT_THAT(record.documents, ElementsAre("/usr/kelp/etc/wifi/global.json", "/usr/kelp/etc/wifi/misc.json",
                                            "/usr/kelp/etc/wifi/network.json.default",
                                            "/usr/kelp/etc/wifi/radio.json", "/usr/kelp/etc/wifi/wps.json"));
  EXPECT_THAT(record.archived,
              ElementsAre("/etc/hostapd/mac_filter/mf.info", "/etc/hostapd/mac_filter/mf.setting",
                          "/etc/hostapd/mac_filter/mf_guest.info", "/usr/kelp/etc/wifi/lbd.conf",
                          "/usr/kelp/etc/wifi/lbd.guest.conf", "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00",
                          "/usr/kelp/etc/wifi/wifi_ap_d8:47:32:9a:51:e4",
                          "/usr/kelp/etc/wifi/wifi_ap_d8:47:32:9a:51:e5", "/usr/kelp/etc/wifi/wifi_nvram",
                          "/usr/kelp/etc/wifi/wifi_wps"));
}

TEST_F(Rehearsals, LayWhatAListGivesOverTheImage) {
  EXPECT_EQ(Rehearse({kSample, "8000", {{"/usr/kelp/etc/info.conf", "kelpbios=none\n"}}, {}}).error,
            "Failed to update config, error: Invalid kelpbios value: none");
  folder_.Write("overlay/usr/kelp/etc/info.conf", "kelpbios=overlaid\n");
  options_.overlays = {folder_ / "overlay"};
  EXPECT_THAT(Rehearse({kSample, "8000", {}, {}}).error, HasSubstr("value: overlaid"));
  EXPECT_THAT(Rehearse({kSample, "8000", {{"/usr/kelp/etc/info.conf", "kelpbios=listed\n"}}, {}}).error,
              HasSubstr("value: listed"))
      << "what a list gives for one device comes over what all of them get";
}

TEST_F(Rehearsals, SayWhatAnIncompleteImageLacks) {
  fs::create_directory(folder_ / "image");
  EXPECT_EQ(Rehearse({(folder_ / "image").native(), "8000", {}, {}}).outcome, Outcome::IncompleteImage);
  const Record no_entries = Rehearse(
      {(folder_ / "image").native(),
       "8000",
       {{"/usr/kelp/etc/info.conf", "kelpbios=maple\nwps_pin=1\n"}, {"/usr/kelp/etc/wifi/wifi_wps", ""}},
       {}});
  EXPECT_EQ(no_entries.outcome, Outcome::IncompleteImage);
  EXPECT_THAT(no_entries.error, HasSubstr("no kernel entries"));
}

TEST_F(Rehearsals, SayWhyAnImageIsUnusable) {
  folder_.Write("a.tar", TarEntry("../x", '0', 0644, "") + TarEnd());
  Record record = Rehearse({(folder_ / "a.tar").native(), "8000", {}, {}});
  EXPECT_EQ(record.outcome, Outcome::UnusableImage);
  EXPECT_EQ(record.error, (folder_ / "a.tar").native() + " has a path with \"..\": ../x");
  EXPECT_EQ(record.status, std::nullopt);
  EXPECT_EQ(Rehearse({kSample, "8000", {{"etc/x", ""}}, {}}).error,
            kSample + " is given a file that has no absolute path: etc/x");
  EXPECT_EQ(Rehearse({kSample, "8000", {{"/etc/../x", ""}}, {}}).outcome, Outcome::UnusableImage);
  EXPECT_EQ(Rehearse({kSample, "8000", {}, {{"a=b", "c"}}}).outcome, Outcome::UnusableImage);
  EXPECT_EQ(Rehearse({kSample, "8000", {{"/dev/log", ""}}, {}}).outcome, Outcome::UnusableImage);
}

TEST_F(Rehearsals, TakeDevicesThatNeedAPlaceOfTheirOwn) {
  fs::copy(kSample, folder_ / "image", fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  folder_.Write("image/lib/own", "x");
  fs::create_directory_symlink("/var", folder_ / "image/tmp");
  EXPECT_EQ(Rehearse({(folder_ / "image").native(), "8000", {}, {}}).outcome, Outcome::Migrated);
}

TEST_F(Rehearsals, MaskWhatWasStored) {
  const std::string file = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
  const Record record =
      Rehearse({kSample, "8000", {{file, "ssid=not base64!\npassword=plain secret\n"}}, {}});
  EXPECT_EQ(record.outcome, Outcome::MigratedWithFallbacks);
  EXPECT_THAT(record.log, Contains(NumberedLine{589, 3, "Failed to decrypt ssid with ********"}));
  EXPECT_THAT(record.log, Contains(NumberedLine{575, 3, "Failed to decode base64 string: ********"}));
  EXPECT_THAT(RecordLine(record), Not(HasSubstr("plain secret")));
  EXPECT_THAT(record.findings, Contains("password-lost"));
}

TEST_F(Rehearsals, MaskWhatAProgramMayTell) {
  options_.program = TEST_PROGRAM;
  const Record record =
      Rehearse({kSample, "tell", {{"/usr/kelp/etc/wifi/wifi_wps", "wps_ap_pin=12345670\n"}}, {}});
  EXPECT_EQ(record.outcome, Outcome::Failed);
  EXPECT_EQ(record.error, "wrong: wps_ap_pin=********");
  EXPECT_THAT(record.log, ElementsAre(NumberedLine{999, 3, "wrong: wps_ap_pin=********\n"}));
}

TEST_F(Rehearsals, KeepTheStartOfWhatAProgramSaysWithoutEnd) {
  options_.program = TEST_PROGRAM;
  options_.limit = std::chrono::milliseconds(300);
  const Record record = Rehearse({kSample, "wild", {}, {}});
  EXPECT_EQ(record.outcome, Outcome::TimedOut);
  EXPECT_LT(RecordLine(record).size(), 600'000U);
  EXPECT_GT(record.log.size(), 1U);
  EXPECT_THAT(record.log.back().text, ::testing::MatchesRegex("\\([0-9]+ lines more\\)"));
}

TEST_F(Rehearsals, HaveRoomForManySmallFiles) {
  std::string archive;
  for (int i = 0; i < 18'000; ++i) archive += TarEntry("f" + std::to_string(i), '0', 0644, "x");
  folder_.Write("a.tar", archive + TarEnd());
  options_.image_limits.bytes = 20'000;
  EXPECT_EQ(Rehearse({(folder_ / "a.tar").native(), "8000", {}, {}}).outcome, Outcome::IncompleteImage);
}

TEST_F(Rehearsals, NeedOverlaysThatCanBeLaidOut) {
  folder_.Write("overlay/etc/x", "x");
  options_.overlays = {folder_ / "overlay"};
  EXPECT_NO_THROW(RequireOverlays(options_));
  options_.overlays.push_back(folder_ / "none");
  EXPECT_THROW(RequireOverlays(options_), UnusableImage);
}

TEST_F(Rehearsals, MaskASecretWhereverTheProgramTellsIt) {
  const Record record =
      Rehearse({kSample,
                "8000",
                {{"/usr/kelp/etc/info.conf", "kelpbios=Sword & Fish\nadmin_password=Sword & Fish\n"}},
                {}});
  EXPECT_EQ(record.error, "Failed to update config, error: Invalid kelpbios value: ********");
  EXPECT_THAT(RecordLine(record), Not(HasSubstr("Sword")));
  const std::string file = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
  const Record word = Rehearse({kSample, "8000", {{file, "security=swordfish\npassword=swordfish\n"}}, {}});
  EXPECT_THAT(word.log, Contains(NumberedLine{760, 3, "Invalid security mode: ********, select wpa2."}));
  options_.with_household = true;
  EXPECT_THAT(
      RecordLine(Rehearse({kSample, "8000", {{file, "pmf_mode=swordfish\npassword=swordfish\n"}}, {}})),
      Not(HasSubstr("swordfish")));
}

RunResult Documents(const std::string& name, const std::string& text) {
  RunResult run;
  run.after["/usr/kelp/etc/wifi/" + name] = {Entry::Kind::File, 0600, text};
  return run;
}

/// What `compare` tells of two versions of a network document.
std::vector<std::string> Differences(const std::string& was, const std::string& now) {
  const Record record;
  std::vector<std::string> texts;
  for (const Difference& difference : Compare(record, Documents("network.json.default", was), record,
                                              Documents("network.json.default", now))) {
    texts.push_back(difference.what + ": " + difference.was + " -> " + difference.now);
  }
  return texts;
}

TEST(Comparisons, GoSettingBySetting) {
  EXPECT_THAT(Differences("{\"a\":1}", "{ \"a\" : 1 }"), IsEmpty()) << "blanks make no difference";
  EXPECT_THAT(Differences("[{\"f\":[{\"security\":7}]}]", "[{\"f\":[{\"security\":4}]}]"),
              ElementsAre("network.json.default[0].f[0].security: 7 -> 4"));
  EXPECT_THAT(Differences("{\"a\":1,\"c\":{}}", "{\"b\":\"x\",\"c\":[]}"),
              ElementsAre("network.json.default.a: 1 -> ", "network.json.default.b:  -> \"x\"",
                          "network.json.default.c: {...} -> [...]"));
  EXPECT_THAT(Differences("[1,2]", "[1]"), ElementsAre("network.json.default[1]: 2 -> "));
  EXPECT_THAT(Differences("{}", "{"), ElementsAre("network.json.default: JSON -> no JSON"));
}

TEST(Comparisons, MaskSecretsAndTellThatTheyChanged) {
  EXPECT_THAT(Differences("{\"password\":\"old\"}", "{\"password\":\"new\"}"),
              ElementsAre("network.json.default.password: \"********\" -> \"********\""));
  EXPECT_THAT(Differences("{\"password\":\"old\"}", "{\"password\":\"\"}"),
              ElementsAre("network.json.default.password: \"********\" -> \"\""));
  EXPECT_THAT(Differences("{\"pin\":1234}", "{\"pin\":5678}"),
              ElementsAre("network.json.default.pin: \"********\" -> \"********\""));
  EXPECT_THAT(Differences("{\"passwords\":[\"old\"]}", "{\"passwords\":[\"new\",\"more\"]}"),
              ElementsAre("network.json.default.passwords[0]: \"********\" -> \"********\"",
                          "network.json.default.passwords[1]:  -> \"********\""));
  EXPECT_THAT(Differences("{\"password\":false}", "{\"password\":true}"),
              ElementsAre("network.json.default.password: false -> true"));
  EXPECT_THAT(Differences("{\"password\":12345678}", "{\"password\":[\"other\"]}"),
              ElementsAre("network.json.default.password: \"********\" -> [...]"));
  EXPECT_THAT(Differences("{\"password\":[\"first\"]}", "{\"password\":[\"other\"]}"),
              ElementsAre("network.json.default.password[0]: \"********\" -> \"********\""));
  EXPECT_THAT(Differences("{\"password\":\"swordfish\",\"week_day\":\"swordfish\"}",
                          "{\"password\":\"swordfish\",\"week_day\":\"\"}"),
              ElementsAre("network.json.default.week_day: \"********\" -> \"\""));
}

TEST(Comparisons, SeeHowTheRunsEndedAndWhatTheyLeft) {
  Record old_record;
  old_record.outcome = Outcome::Migrated;
  old_record.status = 0;
  Record new_record = old_record;
  new_record.outcome = Outcome::Crashed;
  new_record.status.reset();
  new_record.signal = 11;
  new_record.log = {{229, 4, "x"}};
  RunResult old_run = Documents("legacy/a", "x");
  const RunResult new_run = Documents("a", "x");
  const std::vector<Difference> differences = Compare(old_record, old_run, new_record, new_run);
  EXPECT_THAT(differences,
              ElementsAre(Difference{"outcome", "\"migrated, status 0\"", "\"crashed, signal 11\""},
                          Difference{"log", "[]", "[\"229 <4> x\"]"},
                          Difference{"/usr/kelp/etc/wifi/a", "", "\"file of 1 bytes, mode 384\""},
                          Difference{"/usr/kelp/etc/wifi/legacy/a", "\"file of 1 bytes, mode 384\"", ""}));
  EXPECT_THAT(Compare(old_record, Documents("x", "1"), old_record, Documents("x", "2")),
              ElementsAre(Difference{"/usr/kelp/etc/wifi/x", "\"file of 1 bytes, mode 384\"",
                                     "\"file of 1 bytes, mode 384, other content\""}));
}

TEST(Conditions, AreOutcomesAndFindings) {
  RequireKnown({"failed", "ssid-lost"});
  EXPECT_THROW(RequireKnown({"failde"}), std::invalid_argument);
  Record record;
  record.outcome = Outcome::Migrated;
  record.findings = {"ssid-lost"};
  EXPECT_TRUE(IsNamedIn({"ssid-lost"}, record));
  EXPECT_TRUE(IsNamedIn({"migrated"}, record));
  EXPECT_FALSE(IsNamedIn({"failed", "crashed"}, record));
}

}  // namespace
}  // namespace lab::fleets
