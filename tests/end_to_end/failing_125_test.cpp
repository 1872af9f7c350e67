// Each way in which the migration from 1.2.5 fails before its archive, and what it leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/end_to_end/device_tree.h"
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

class Failing125 : public ::testing::Test {
 protected:
  /// Runs, expects a failure, and that the run had started. Gives the failure's text.
  std::string Fail(const lab::RunOptions& options = {}) {
    run_ = UpdateFrom(device_, "8000", options);
    const std::string what = ExpectFailure(run_, "8000");
    EXPECT_EQ(PrintLog(run_.log).front(), Warning(229, "Start to migrate config from 1.2.5 to 1.3"));
    return what;
  }

  /// The document that was written is the one that a run without failure writes.
  void ExpectWhole(const std::string& document) {
    EXPECT_EQ(testing_support::ParseJson(device_.Read(kWifi + document)),
              testing_support::ParseJson(ExpectedDocument(kDevice, document)))
        << document;
  }

  lab::PrivateRoot device_{Image(kDevice)};
  lab::RunResult run_;
};

TEST_F(Failing125, MissingKernelEntryOfARadio) {
  for (const char* entry : {"4", "5"}) {
    lab::PrivateRoot device(Image(kDevice));
    device.Remove("/proc/sys/kernel/kelp_mac_address" + std::string(entry));
    const lab::RunResult run = UpdateFrom(device, "8000");
    ExpectFailure(run, "8000", "Failed to get bssid from kelp_mac_address");
    ExpectOnlyWritten(run, {"global.json"});
  }
}

TEST_F(Failing125, KernelEntriesThatNoRadioUsesAreNotMissed) {
  for (const char* entry : {"0", "1", "2", "3"}) {
    device_.Remove("/proc/sys/kernel/kelp_mac_address" + std::string(entry));
  }
  ExpectSuccess(UpdateFrom(device_, "8000"));
}

TEST_F(Failing125, FolderInPlaceOfAKernelEntry) {
  device_.Remove("/proc/sys/kernel/kelp_mac_address5");
  device_.MakeDirectory("/proc/sys/kernel/kelp_mac_address5");
  EXPECT_EQ(Fail(), "Failed to get bssid from kelp_mac_address");
  ExpectOnlyWritten(run_, {"global.json"});
}

TEST_F(Failing125, UnreadableKernelEntry) {
  device_.SetMode("/proc/sys/kernel/kelp_mac_address4", 0000);
  lab::RunOptions options;
  options.drop_file_privileges = true;
  EXPECT_EQ(Fail(options), "Failed to get bssid from kelp_mac_address");
  ExpectOnlyWritten(run_, {"global.json"});
}

// Asked for on every run, also where the WPS file has a PIN of its own.
TEST_F(Failing125, MissingDefaultPin) {
  DropKey(device_, kInformation, "wps_pin");
  EXPECT_NE(Fail(), "");
  ExpectOnlyWritten(run_, {"global.json"});
}

TEST_F(Failing125, MissingWifiFolder) {
  device_.Remove("/usr/kelp/etc/wifi");
  EXPECT_THAT(Fail(), AllOf(HasSubstr(kWifi), HasSubstr("No such file or directory")));
  ExpectUntouched(run_);
}

TEST_F(Failing125, FileInPlaceOfTheWifiFolder) {
  device_.Remove("/usr/kelp/etc/wifi");
  device_.Write("/usr/kelp/etc/wifi", "no folder");
  EXPECT_THAT(Fail(), AllOf(HasSubstr(kWifi), HasSubstr("Not a directory")));
  ExpectUntouched(run_);
}

TEST_F(Failing125, UnwritableWifiFolder) {
  device_.SetMode("/usr/kelp/etc/wifi", 0555);
  lab::RunOptions options;
  options.drop_file_privileges = true;
  EXPECT_THAT(Fail(options), HasSubstr(kWifi + "global.json"));
  ExpectUntouched(run_);
}

TEST_F(Failing125, WifiFolderThatMayNotBeSearchedFailsTheSkipRule) {
  device_.SetMode("/usr/kelp/etc/wifi", 0000);
  lab::RunOptions options;
  options.drop_file_privileges = true;
  const lab::RunResult run = UpdateFrom(device_, "8000", options);
  EXPECT_THAT(ExpectFailure(run, "8000"), HasSubstr(kWifi + "global.json"));
  EXPECT_EQ(run.log.size(), 1U);
  ExpectUntouched(run);
}

TEST_F(Failing125, FilterFolderThatMayNotBeSearchedFailsTheArchiveOnly) {
  device_.SetMode("/etc/hostapd/mac_filter", 0000);
  lab::RunOptions options;
  options.drop_file_privileges = true;
  EXPECT_THAT(Fail(options), HasSubstr("filesystem error: cannot rename"));
  for (const char* document :
       {"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"}) {
    EXPECT_TRUE(device_.Exists(kWifi + document)) << document;
  }
}

TEST_F(Failing125, FolderAtTheRadioDocument) {
  device_.MakeDirectory(kWifi + "radio.json");
  EXPECT_THAT(Fail(), HasSubstr(kWifi + "radio.json"));
  ExpectOnlyWritten(run_, {"global.json", "misc.json"});
  ExpectWhole("global.json");
  ExpectWhole("misc.json");
}

TEST_F(Failing125, FolderAtTheWpsDocument) {
  device_.Write(kWifi + "wps.json/kept", "by somebody");
  EXPECT_THAT(Fail(), HasSubstr(kWifi + "wps.json"));
  ExpectOnlyWritten(run_, {"global.json", "misc.json", "radio.json"});
  ExpectWhole("radio.json");
}

TEST_F(Failing125, FolderAtTheNetworkDocument) {
  device_.MakeDirectory(kWifi + "network.json.default");
  EXPECT_THAT(Fail(), HasSubstr(kWifi + "network.json.default"));
  ExpectOnlyWritten(run_, {"global.json", "misc.json", "radio.json", "wps.json"});
  ExpectWhole("wps.json");
}

// The temporary name of a document, too, can be taken: by what an interrupted run left, or for good.
TEST_F(Failing125, FolderAtATemporaryName) {
  device_.Write(kWifi + "radio.json.new/kept", "by somebody");
  EXPECT_THAT(Fail(), HasSubstr(kWifi + "radio.json"));
  ExpectOnlyWritten(run_, {"global.json", "misc.json"});
}

TEST_F(Failing125, LinkAtATemporaryNameIsNotFollowed) {
  device_.Write("/tmp/precious", "stays");
  device_.Link(kWifi + "radio.json.new", "/tmp/precious");
  ExpectSuccess(UpdateFrom(device_, "8000"));
  EXPECT_EQ(device_.Read("/tmp/precious"), "stays");
  EXPECT_FALSE(device_.Exists(kWifi + "radio.json.new"));
  ExpectWhole("radio.json");
}

// A document that is there already, unlike the global and the misc one, is replaced.
TEST_F(Failing125, OlderDocumentsAreReplaced) {
  for (const char* name : {"radio.json", "wps.json", "network.json.default"}) {
    device_.Write(kWifi + name, "older", 0644);
  }
  const lab::RunResult run = UpdateFrom(device_, "8000");
  ExpectSuccess(run);
  ExpectedRun(kDevice).ExpectDocuments(run.after);
  EXPECT_EQ(run.after.at(kWifi + "radio.json").mode, mode_t{0600});
}

// What cannot be read falls back to its defaults, and is archived all the same.
TEST_F(Failing125, UnreadableLegacyFilesDoNotFailTheRun) {
  for (const std::string& path : {kWifi + "wifi_wps", kFilters + "mf.info", kFilters + "mf.setting"}) {
    device_.SetMode(path, 0000);
  }
  lab::RunOptions options;
  options.drop_file_privileges = true;

  const lab::RunResult run = UpdateFrom(device_, "8000", options);

  ExpectSuccess(run);
  const Json::Value wps = testing_support::ParseJson(device_.Read(kWifi + "wps.json"));
  EXPECT_EQ(wps["pin"].asString(), "90314428");
  EXPECT_FALSE(wps["pin_enabled"].asBool());
  const Json::Value misc = testing_support::ParseJson(device_.Read(kWifi + "misc.json"));
  EXPECT_EQ(misc["broadcastDetect"]["threshold"].asInt(), 100);
  EXPECT_TRUE(device_.Exists(kArchive + "wifi_wps"));
}

}  // namespace
}  // namespace end_to_end
