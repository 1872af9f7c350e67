// The archive: the last step of the migration from 1.2.5, which stops at the first file that it cannot move.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/edits.h"
#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kDevice = "dual-band-standalone";

// In the order in which the archive takes them.
const std::vector<std::string> kConsumed = {
    "/etc/hostapd/mac_filter/mf.info",
    "/etc/hostapd/mac_filter/mf.setting",
    "/etc/hostapd/mac_filter/mf_guest.info",
    "/usr/kelp/etc/wifi/lbd.conf",
    "/usr/kelp/etc/wifi/lbd.guest.conf",
    "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00",
    "/usr/kelp/etc/wifi/wifi_ap_d8:47:32:9a:51:e4",
    "/usr/kelp/etc/wifi/wifi_ap_d8:47:32:9a:51:e5",
    "/usr/kelp/etc/wifi/wifi_nvram",
    "/usr/kelp/etc/wifi/wifi_wps",
};

std::string Archived(const std::string& path) {
  return kArchive + path.substr(path.rfind('/') + 1);
}

/// All documents are written, the first `count` consumed files are in the archive, and nothing else has
/// changed.
void ExpectArchived(const lab::RunResult& run, std::size_t count) {
  ExpectedTree expected(run.before);
  for (const char* name : {"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"}) {
    expected.Written(kWifi + name, run.after);
  }
  expected.ArchiveMade();
  for (std::size_t i = 0; i < count; ++i) expected.Moved(kConsumed[i], Archived(kConsumed[i]));
  expected.ExpectEqual(run.after);
}

std::string MissingFile(const std::string& path) {
  return "filesystem error: cannot rename: No such file or directory [" + path + "] [" + Archived(path) + "]";
}

struct Case {
  const char* name;
  Edits edits;
  ::testing::Matcher<std::string> failure;  // nothing: there is none
  std::size_t archived = kConsumed.size();  // files
};

TEST(Archive, TakesTheConsumedFilesInByteOrderAndNoOtherUntilOneCannotBeMoved) {
  const std::string archive = kArchive.substr(0, kArchive.size() - 1);
  const auto fails = [](const char* how, const std::string& path) {
    return AllOf(StartsWith(std::string("filesystem error: ") + how), HasSubstr("[" + path + "]"));
  };
  std::vector<Case> cases = {
      {"all", {}, ""},
      {"two missing", {Gone(kConsumed[9]), Gone(kConsumed[3])}, MissingFile(kConsumed[3]), 3},
      {"no filter folder", {Gone("/etc/hostapd")}, MissingFile(kConsumed[0]), 0},
      {"a kernel entry that climbs out of the folder leads nowhere",
       {File("/proc/sys/kernel/kelp_mac_address4", "../../../../etc/hostapd/mac_filter\n")},
       MissingFile(kWifi + "wifi_ap_..:/.:./:..:/.:./e:tc/h:os:ta:pd/m:ac:_f:il:te:r"),
       5},
      {"a file missing whose name the archive has",
       {Gone(kConsumed[8]), File(Archived(kConsumed[8]), "of an earlier upgrade")},
       MissingFile(kConsumed[8]),
       8},
      {"files of its names in the archive",
       {File(kArchive + "wifi_wps", "earlier"), File(kArchive + "mf.info", "longer and older"),
        File(kArchive + "another", "stays")},
       ""},
      {"folder of its name in the archive",
       {File(kArchive + "lbd.conf/kept", "")},
       fails("cannot rename: ", kConsumed[3]),
       3},
      {"archive of another mode", {Folder(archive), Mode(archive, 0711)}, ""},
      {"a dangling link to move", {Link(kWifi + "wifi_nvram", "/nowhere")}, ""},
      {"a folder to move", {File(kWifi + "wifi_nvram", ""), Folder(kWifi + "wifi_nvram")}, ""},
      {"file in the archive's place",
       {File(archive, "no folder")},
       "filesystem error: cannot create directories: File exists [" + kArchive + "]",
       0},
      {"dangling link in the archive's place",
       {Link(archive, "/nowhere")},
       fails("cannot create directories", kArchive),
       0},
      {"loop in the archive's place",
       {Loop(archive)},
       "filesystem error: cannot create directories: Too many levels of symbolic links [" + kArchive + "]",
       0},
  };
  for (std::size_t i = 0; i < kConsumed.size(); ++i) {
    cases.push_back({kConsumed[i].c_str(), {Gone(kConsumed[i])}, MissingFile(kConsumed[i]), i});
  }
  for (const Case& archive_case : cases) {
    SCOPED_TRACE(archive_case.name);
    lab::PrivateRoot device = Edited(kDevice, archive_case.edits);
    const lab::RunResult run = UpdateFrom(device, "8000");
    if (archive_case.failure.Matches("")) {
      ExpectSuccess(run);
    } else {
      EXPECT_THAT(ExpectFailure(run, "8000"), archive_case.failure);
    }
    ExpectArchived(run, archive_case.archived);
  }
}

TEST(Archive, IsForNobodyButItsOwnerToWriteToWhateverTheUmask) {
  for (const auto& [umask, mode] : {std::pair{0U, 0755U}, {002U, 0755U}, {077U, 0700U}}) {
    lab::PrivateRoot device(Image(kDevice));
    const lab::RunResult run = UpdateFrom(device, "8000", {.umask = umask});
    ExpectSuccess(run);
    EXPECT_EQ(run.after.at(kArchive.substr(0, kArchive.size() - 1)).mode, mode);
  }
}

TEST(Archive, LinkToAFolderInItsPlaceIsFollowed) {
  lab::PrivateRoot device = Edited(kDevice, {Folder("/var/archive"), Link(kWifi + "legacy", "/var/archive")});
  ExpectSuccess(UpdateFrom(device, "8000"));
  EXPECT_TRUE(device.Exists("/var/archive/wifi_wps"));
}

TEST(Archive, NamesAreNoFormats) {
  lab::PrivateRoot device = Edited(
      kDevice, {File("/proc/sys/kernel/kelp_mac_address4", "%s%n\n"), File(kWifi + "wifi_ap_%s%n", "")});
  ExpectSuccess(UpdateFrom(device, "8000"));
  EXPECT_TRUE(device.Exists(kArchive + "wifi_ap_%s%n"));
}

// A radio whose access-point file is missing has its defaults, and costs the archive its end.
TEST(Archive, MissesTheFileOfARadioThatNeverHadOne) {
  lab::PrivateRoot device = Edited("dual-band-bridge", {Gone(kWifi + "wifi_ap_11:11:11:11:11:11")});

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectFailure(run, "8000", MissingFile(kWifi + "wifi_ap_11:11:11:11:11:11"));
  EXPECT_TRUE(device.Exists(kArchive + "wifi_ap_00:00:00:00:00:00"));
  EXPECT_TRUE(device.Exists(kWifi + "wifi_ap_F4:B5:20:5C:7D:E5"));
  EXPECT_TRUE(device.Exists(kWifi + "network.json.bridge"));
}

}  // namespace
}  // namespace end_to_end
