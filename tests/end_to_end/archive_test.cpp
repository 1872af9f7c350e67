// The archive: the last step of the migration from 1.2.5, which stops at the first file that it cannot move.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/end_to_end/device_tree.h"
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

TEST(Archive, AKernelEntryThatClimbsOutOfTheFolderLeadsNowhere) {
  lab::PrivateRoot device(Image(kDevice));
  device.Write("/proc/sys/kernel/kelp_mac_address4", "../../../../etc/hostapd/mac_filter\n");
  const lab::RunResult run = UpdateFrom(device, "8000");
  ExpectFailure(run, "8000", MissingFile(kWifi + "wifi_ap_..:/.:./:..:/.:./e:tc/h:os:ta:pd/m:ac:_f:il:te:r"));
  ExpectArchived(run, 5);
}

TEST(Archive, TakesTheConsumedFilesAndNoOther) {
  lab::PrivateRoot device(Image(kDevice));
  const lab::RunResult run = UpdateFrom(device, "8000");
  ExpectSuccess(run);
  ExpectArchived(run, kConsumed.size());
}

TEST(Archive, StopsAtTheFirstMissingFileInByteOrder) {
  for (std::size_t i = 0; i < kConsumed.size(); ++i) {
    SCOPED_TRACE(kConsumed[i]);
    lab::PrivateRoot device(Image(kDevice));
    device.Remove(kConsumed[i]);

    const lab::RunResult run = UpdateFrom(device, "8000");

    ExpectFailure(run, "8000", MissingFile(kConsumed[i]));
    ExpectArchived(run, i);
  }
}

TEST(Archive, TwoMissingFilesFailAtTheFirst) {
  lab::PrivateRoot device(Image(kDevice));
  device.Remove(kConsumed[9]);
  device.Remove(kConsumed[3]);

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectFailure(run, "8000", MissingFile(kConsumed[3]));
  ExpectArchived(run, 3);
}

TEST(Archive, NoFilterFolderAtAllFailsAtItsFirstFile) {
  lab::PrivateRoot device(Image(kDevice));
  device.Remove("/etc/hostapd");

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectFailure(run, "8000", MissingFile(kConsumed[0]));
  ExpectArchived(run, 0);
}

TEST(Archive, NamesThatItHoldsAreReplaced) {
  lab::PrivateRoot device(Image(kDevice));
  device.Write(kArchive + "wifi_wps", "of an earlier upgrade");
  device.Write(kArchive + "mf.info", "of an earlier upgrade");
  device.Write(kArchive + "another", "stays");

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectSuccess(run);
  ExpectArchived(run, kConsumed.size());
  EXPECT_EQ(device.Read(kArchive + "another"), "stays");
}

TEST(Archive, FolderUnderANameThatItNeedsStopsIt) {
  lab::PrivateRoot device(Image(kDevice));
  device.Write(kArchive + "lbd.conf/kept", "by somebody");

  const lab::RunResult run = UpdateFrom(device, "8000");

  EXPECT_THAT(ExpectFailure(run, "8000"),
              AllOf(StartsWith("filesystem error: cannot rename: "), HasSubstr("[" + kConsumed[3] + "]")));
  ExpectArchived(run, 3);
}

TEST(Archive, FileInPlaceOfTheFolderStopsItBeforeAnyMove) {
  lab::PrivateRoot device(Image(kDevice));
  device.Write("/usr/kelp/etc/wifi/legacy", "no folder");

  const lab::RunResult run = UpdateFrom(device, "8000");

  EXPECT_THAT(ExpectFailure(run, "8000"),
              AllOf(StartsWith("filesystem error"), HasSubstr("/usr/kelp/etc/wifi/legacy")));
  ExpectArchived(run, 0);
}

TEST(Archive, LinksAreMovedThemselves) {
  lab::PrivateRoot device(Image(kDevice));
  device.Remove(kWifi + "wifi_nvram");
  device.Link(kWifi + "wifi_nvram", "/nowhere");

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectSuccess(run);
  ExpectArchived(run, kConsumed.size());
}

// A radio whose access-point file is missing has its defaults, and costs the archive its end.
TEST(Archive, MissesTheFileOfARadioThatNeverHadOne) {
  lab::PrivateRoot device(Image("dual-band-bridge"));
  device.Remove(kWifi + "wifi_ap_11:11:11:11:11:11");

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectFailure(run, "8000", MissingFile(kWifi + "wifi_ap_11:11:11:11:11:11"));
  EXPECT_TRUE(device.Exists(kArchive + "wifi_ap_00:00:00:00:00:00"));
  EXPECT_TRUE(device.Exists(kWifi + "wifi_ap_F4:B5:20:5C:7D:E5"));
  EXPECT_TRUE(device.Exists(kWifi + "network.json.bridge"));
}

}  // namespace
}  // namespace end_to_end
