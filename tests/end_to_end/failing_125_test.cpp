// Each way in which the migration from 1.2.5 fails before its archive, and what it leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/edits.h"
#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using testing_support::PrintLog;
using testing_support::Warning;

constexpr const char* kDevice = "dual-band-standalone";

const std::vector<std::string> kDocuments = {"global.json", "misc.json", "radio.json", "wps.json",
                                             "network.json.default"};
constexpr const char* kNoBssid = "Failed to get bssid from kelp_mac_address";

std::string KernelEntry(int number) {
  return "/proc/sys/kernel/kelp_mac_address" + std::to_string(number);
}

struct Case {
  const char* name;
  Edits edits;
  ::testing::Matcher<std::string> failure;
  std::size_t written;  // documents, as a run without failure writes them
  bool without_privileges = false;
};

TEST(Failing125, LeavesTheDocumentsBeforeTheFailureAndNothingElse) {
  const std::string folder = "/usr/kelp/etc/wifi";
  const Case cases[] = {
      {"kernel entry of radio 1 missing", {Gone(KernelEntry(4))}, kNoBssid, 1},
      {"kernel entry of radio 2 missing", {Gone(KernelEntry(5))}, kNoBssid, 1},
      {"folder in place of a kernel entry", {Folder(KernelEntry(5))}, kNoBssid, 1},
      {"kernel entry that may not be read", {Mode(KernelEntry(4), 0000)}, kNoBssid, 1, true},
      // Asked for on every run, also where the WPS file has a PIN of its own.
      {"default PIN missing", {NoFact("wps_pin")}, HasSubstr("wps_pin"), 1},
      {"no Wi-Fi folder", {Gone(folder)}, AllOf(HasSubstr(kWifi), HasSubstr("No such file or directory")), 0},
      {"file in place of the Wi-Fi folder",
       {File(folder, "no folder")},
       AllOf(HasSubstr(kWifi), HasSubstr("Not a directory")),
       0},
      {"Wi-Fi folder that may not be written",
       {Mode(folder, 0555)},
       HasSubstr(kWifi + "global.json"),
       0,
       true},
      {"folder at the radio document", {Folder(kWifi + "radio.json")}, HasSubstr(kWifi + "radio.json"), 2},
      {"folder at the WPS document", {File(kWifi + "wps.json/kept", "")}, HasSubstr(kWifi + "wps.json"), 3},
      {"folder at the network document",
       {Folder(kWifi + "network.json.default")},
       HasSubstr(kWifi + "network.json.default"),
       4},
      // The temporary name of a document, too, can be taken for good.
      {"folder at the global document's temporary name",
       {Folder(kWifi + "global.json.new")},
       HasSubstr(kWifi + "global.json"),
       0},
      {"folder at the misc document's temporary name",
       {Folder(kWifi + "misc.json.new")},
       HasSubstr(kWifi + "misc.json"),
       1},
      {"filled folder at a temporary name",
       {File(kWifi + "radio.json.new/kept", "")},
       HasSubstr(kWifi + "radio.json"),
       2},
  };
  for (const Case& failing : cases) {
    SCOPED_TRACE(failing.name);
    lab::PrivateRoot device = Edited(kDevice, failing.edits);
    lab::RunOptions options;
    options.drop_file_privileges = failing.without_privileges;

    const lab::RunResult run = UpdateFrom(device, "8000", options);

    EXPECT_THAT(ExpectFailure(run, "8000"), failing.failure);
    EXPECT_EQ(PrintLog(run.log).front(), Warning(229, "Start to migrate config from 1.2.5 to 1.3"));
    ExpectedTree expected(run.before);
    for (std::size_t i = 0; i < failing.written; ++i) {
      expected.Written(kWifi + kDocuments[i], run.after);
      EXPECT_EQ(testing_support::ParseJson(run.after.at(kWifi + kDocuments[i]).content),
                testing_support::ParseJson(ExpectedDocument(kDevice, kDocuments[i])));
    }
    expected.ExpectEqual(run.after);
  }
}

TEST(Failing125, KernelEntriesThatNoRadioUsesAreNotMissed) {
  lab::PrivateRoot device = Edited(
      kDevice, {Gone(KernelEntry(0)), Gone(KernelEntry(1)), Gone(KernelEntry(2)), Gone(KernelEntry(3))});
  ExpectSuccess(UpdateFrom(device, "8000"));
}

TEST(Failing125, WifiFolderThatMayNotBeSearchedFailsTheSkipRule) {
  lab::PrivateRoot device = Edited(kDevice, {Mode("/usr/kelp/etc/wifi", 0000)});
  lab::RunOptions options;
  options.drop_file_privileges = true;
  const lab::RunResult run = UpdateFrom(device, "8000", options);
  EXPECT_THAT(ExpectFailure(run, "8000"), HasSubstr(kWifi + "global.json"));
  EXPECT_EQ(run.log.size(), 1U);
  ExpectUntouched(run);
}

// What an interrupted run left at a temporary name is no obstacle, nor followed, and a document that is there
// already, unlike the global and the misc one, is replaced.
TEST(Failing125, OlderDocumentsAndLeftoversAreReplaced) {
  Edits edits{File("/tmp/precious", "stays"), Link(kWifi + "radio.json.new", "/tmp/precious")};
  for (const char* name : {"radio.json", "wps.json", "network.json.default"}) {
    edits.insert(edits.end(), {File(kWifi + name, "older"), Mode(kWifi + name, 0644)});
  }
  lab::PrivateRoot device = Edited(kDevice, edits);
  const lab::RunResult run = UpdateFrom(device, "8000");
  ExpectSuccess(run);
  ExpectedRun(kDevice).ExpectDocuments(run.after);
  EXPECT_EQ(run.after.at(kWifi + "radio.json").mode, mode_t{0600});
  EXPECT_EQ(device.Read("/tmp/precious"), "stays");
  EXPECT_FALSE(device.Exists(kWifi + "radio.json.new"));
}

TEST(Failing125, FilterFolderThatMayNotBeSearchedFailsTheArchiveOnly) {
  lab::PrivateRoot device = Edited(kDevice, {Mode("/etc/hostapd/mac_filter", 0000)});
  lab::RunOptions options;
  options.drop_file_privileges = true;
  EXPECT_THAT(ExpectFailure(UpdateFrom(device, "8000", options), "8000"),
              HasSubstr("filesystem error: cannot rename"));
  for (const std::string& document : kDocuments) EXPECT_TRUE(device.Exists(kWifi + document)) << document;
}

// What cannot be read falls back to its defaults, and is archived all the same.
TEST(Failing125, UnreadableLegacyFilesDoNotFailTheRun) {
  lab::PrivateRoot device = Edited(kDevice, {Mode(kWifi + "wifi_wps", 0000), Mode(kFilters + "mf.info", 0000),
                                             Mode(kFilters + "mf.setting", 0000)});
  lab::RunOptions options;
  options.drop_file_privileges = true;

  const lab::RunResult run = UpdateFrom(device, "8000", options);

  ExpectSuccess(run);
  const Json::Value wps = testing_support::ParseJson(device.Read(kWifi + "wps.json"));
  EXPECT_EQ(wps["pin"].asString(), "90314428");
  EXPECT_FALSE(wps["pin_enabled"].asBool());
  const Json::Value misc = testing_support::ParseJson(device.Read(kWifi + "misc.json"));
  EXPECT_EQ(misc["broadcastDetect"]["threshold"].asInt(), 100);
  EXPECT_TRUE(device.Exists(kArchive + "wifi_wps"));
}

}  // namespace
}  // namespace end_to_end
