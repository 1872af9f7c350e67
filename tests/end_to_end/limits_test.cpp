// Input of a size or kind that no household has ends in the documents that its bytes stand for, or in their
// fall-backs.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>

#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

const std::string kAllBands = kWifi + "wifi_ap_00:00:00:00:00:00";
constexpr std::size_t kMegabyte = 1000 * 1000;

/// The sanitizers reserve an address space of their own.
lab::RunOptions WithMemory(rlim_t bytes) {
  lab::RunOptions options;
  if (!lab::kSanitizedBuild) options.rlimits = {{RLIMIT_AS, bytes}};
  return options;
}

Json::Value Document(const lab::PrivateRoot& device, const std::string& name) {
  return testing_support::ParseJson(device.Read(kWifi + name));
}

/// The all-bands access-point file with `entry` before everything else.
void PutFirst(lab::PrivateRoot& device, const std::string& entry) {
  device.Write(kAllBands, entry + device.Read(kAllBands));
}

TEST(Limits, AHundredThousandFilteredDevicesAllArrive) {
  lab::PrivateRoot device(Image("tri-band-mesh-router"));
  constexpr int kDevices = 100'000;
  std::string list;
  for (int i = 0; i < kDevices; ++i) {
    const std::string number = std::to_string(1'000'000 + i);
    list += "[" + number + "]\nenable=yes\ndesc=Device " + number + "\nmac=02:" + number.substr(1, 2) + ":" +
            number.substr(3, 2) + ":" + number.substr(5, 2) + ":00:00\n";
  }
  device.Write(kFilters + "mf_deny.conf", list);
  device.Remove(kFilters + "mf_allow.conf");
  ExpectSuccess(UpdateFrom(device, "8000", WithMemory(1000 * kMegabyte)));
  const Json::Value profiles = Document(device, "misc.json")["macFilterProfiles"];
  ASSERT_EQ(profiles.size(), 2U);
  ASSERT_EQ(profiles[0]["devices"].size(), static_cast<unsigned>(kDevices));
  EXPECT_EQ(profiles[0]["devices"][kDevices - 1]["mac"].asString(), "02:09:99:99:00:00");
  EXPECT_EQ(profiles[1]["devices"][0]["name"].asString(), "Device 1000000");
}

TEST(Limits, AnAccessPointFileOf50MegabytesIsReadToItsEnd) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  const std::string original = device.Read(kAllBands);
  std::string padding;
  while (padding.size() < 50 * kMegabyte)
    padding += "# nothing that anybody ever reads, over and over again\n";
  device.Write(kAllBands, padding + "max_num_client=77\n" + original);
  ExpectSuccess(UpdateFrom(device, "8000", WithMemory(300 * kMegabyte)));
  EXPECT_EQ(Document(device, "network.json.default")[0]["max_num_client"].asInt(), 77);
}

TEST(Limits, AFileOf50MegabytesOfTheShortestEntriesIsReadToItsEnd) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  const std::string original = device.Read(kAllBands);
  std::string padding;
  while (padding.size() < 50 * kMegabyte) padding += "a=\n";
  device.Write(kAllBands, padding + "max_num_client=77\n" + original);
  ExpectSuccess(UpdateFrom(device, "8000", WithMemory(800 * kMegabyte)));
  EXPECT_EQ(Document(device, "network.json.default")[0]["max_num_client"].asInt(), 77);
}

TEST(Limits, AScheduleOf10MegabytesArrivesWhole) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  PutFirst(device, "schedule=" + std::string(10 * kMegabyte, '1') + "\n");
  ExpectSuccess(UpdateFrom(device, "8000", WithMemory(500 * kMegabyte)));
  EXPECT_EQ(Document(device, "network.json.default")[0]["schedule"].asString(),
            std::string(10 * kMegabyte, '1'));
}

TEST(Limits, AnUnknownWordOf10MegabytesStillGivesItsLogLine) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  PutFirst(device, "security=" + std::string(10 * kMegabyte, 'x') + "\n");
  const lab::RunResult run = UpdateFrom(device, "8000", WithMemory(500 * kMegabyte));
  EXPECT_EQ(run.status, 0);
  int lines = 0;
  for (const lab::LogLine& line : run.log) {
    if (line.message.starts_with("kelpwifiupdater:760 Invalid security mode: xxxx")) ++lines;
  }
  EXPECT_EQ(lines, 1);
  EXPECT_EQ(Document(device, "network.json.default")[0]["security"].asInt(), 4);
}

TEST(Limits, AMailListOf10MegabytesOfAddressesIsSplit) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  std::string list;
  std::size_t addresses = 0;
  for (; list.size() < 10 * kMegabyte; ++addresses) list += "somebody@household.example,";
  list.pop_back();
  PutFirst(device, "guest_pwd_rotate_mail_list=" + list + "\n");
  const lab::RunResult run = UpdateFrom(device, "8000", WithMemory(1000 * kMegabyte));
  EXPECT_EQ(run.status, 0);
  const Json::Value guest = Document(device, "network.json.default")[1];
  EXPECT_EQ(guest["guestPasswordRotation"]["mail_list"].size(), addresses);
}

TEST(Limits, AMegabyteOfNulsIsAFileWithoutEntries) {
  for (const std::string& file : {kAllBands, kFilters + "mf_deny.conf", kFilters + "mf.setting", kMesh}) {
    lab::PrivateRoot device(Image("dual-band-standalone"));
    device.Write(file, std::string(kMegabyte, '\0'));
    EXPECT_EQ(UpdateFrom(device, "8000").status, 0) << file;
  }
}

class OddKind : public testing::TestWithParam<std::string> {};

TEST_P(OddKind, AFifoCountsAsUnreadable) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  device.Remove(GetParam());
  device.MakeFifo(GetParam());
  const lab::RunResult run = UpdateFrom(device, "8000");
  EXPECT_FALSE(run.timed_out);
  EXPECT_EQ(run.status, 0);
}

TEST_P(OddKind, ALinkLoopEndsByTheRules) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  device.Remove(GetParam());
  device.Link(GetParam(), GetParam());
  const lab::RunResult run = UpdateFrom(device, "8000");
  EXPECT_FALSE(run.timed_out);
  EXPECT_EQ(run.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Files, OddKind,
                         testing::Values(kAllBands, kWifi + "wifi_wps", kFilters + "mf.info",
                                         kFilters + "mf.setting", kFilters + "mf_deny.conf",
                                         kFilters + "mf_allow.conf", kMesh, "/usr/kelp/etc/secret.key",
                                         "/etc/fw_env.config", "/boot/uboot.env",
                                         "/var/lock/fw_printenv.lock"));

TEST(Limits, HostileKernelEntriesAndSectionNamesEndInADefinedResult) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  device.Write("/proc/sys/kernel/kelp_mac_address4", "../../../../etc/hostapd/mac_filter\n");
  device.Write(kFilters + "mf_deny.conf", "[]]\nenable=yes\nmac=02:00:00:00:00:01\n[\n]\n[]\nenable=no\n");
  const lab::RunResult run = UpdateFrom(device, "8000");
  EXPECT_EQ(run.status, 1);  // no such file to archive
  EXPECT_EQ(Document(device, "misc.json")["macFilterProfiles"][0]["devices"].size(), 1U);
}

}  // namespace
}  // namespace end_to_end
