// Input of a size or kind that no household has ends in the documents that its bytes stand for, or in their
// fall-backs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "lab/images/descriptor.h"
#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/json_text.h"

namespace end_to_end {
namespace {

const std::string kAllBands = kWifi + "wifi_ap_00:00:00:00:00:00";
constexpr std::size_t kMegabyte = 1000 * 1000;

/// Memory for the program and `factor` bytes for each byte of its input: with the same factor for a small and
/// a large input, memory grows no faster than the input. (The sanitizers reserve an address space of their
/// own.)
lab::RunOptions WithMemoryFor(std::size_t input, rlim_t factor) {
  lab::RunOptions options;
  if (!lab::kSanitizedBuild) options.rlimits = {{RLIMIT_AS, 50 * kMegabyte + factor * input}};
  return options;
}

Json::Value Document(const lab::PrivateRoot& device, const std::string& name) {
  return testing_support::ParseJson(device.Read(kWifi + name));
}

/// The all-bands access-point file with `entry` before everything else.
void PutFirst(lab::PrivateRoot& device, const std::string& entry) {
  device.Write(kAllBands, entry + device.Read(kAllBands));
}

std::string FilterList(int devices) {
  std::string list;
  for (int i = 0; i < devices; ++i) {
    const std::string number = std::to_string(1'000'000 + i);
    list += "[" + number + "]\nenable=yes\ndesc=Device " + number + "\nmac=02:" + number.substr(1, 2) + ":" +
            number.substr(3, 2) + ":" + number.substr(5, 2) + ":00:00\n";
  }
  return list;
}

TEST(Limits, LockOfTheBootEnvironmentThatIsNeverLetGoCostsNoMigration) {
  lab::PrivateRoot device(Image("tri-band-mesh-router"));
  const std::string lock = device.Path().string() + "/var/lock/fw_printenv.lock";
  const lab::Descriptor holder(::open(lock.c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_EQ(::flock(holder.Get(), LOCK_EX | LOCK_NB), 0);
  const lab::RunResult run = UpdateFrom(device, "8000");
  ExpectSuccess(run);
  const auto is_about_usb3 = [](const lab::LogLine& line) {
    return line.message.find("kelpwifiupdater:896 Failed to call KELPUSBGetUSB3DisableUbootEnv") !=
           std::string::npos;
  };
  EXPECT_EQ(std::count_if(run.log.begin(), run.log.end(), is_about_usb3), 3);
  for (const Json::Value& radio : Document(device, "radio.json")) EXPECT_TRUE(radio["usb3Enabled"].asBool());
}

TEST(Limits, AHundredThousandFilteredDevicesAllArrive) {
  for (const int count : {10'000, 100'000}) {
    lab::PrivateRoot device(Image("tri-band-mesh-router"));
    const std::string list = FilterList(count);
    device.Write(kFilters + "mf_deny.conf", list);
    device.Remove(kFilters + "mf_allow.conf");
    ExpectSuccess(UpdateFrom(device, "8000", WithMemoryFor(list.size(), 30)));
    const Json::Value profiles = Document(device, "misc.json")["macFilterProfiles"];
    ASSERT_EQ(profiles.size(), 2U);
    ASSERT_EQ(profiles[0]["devices"].size(), static_cast<unsigned>(count));
    EXPECT_EQ(profiles[0]["devices"][9'999]["mac"].asString(), "02:00:99:99:00:00");
    EXPECT_EQ(profiles[0]["devices"][count - 1]["name"].asString(),
              "Device " + std::to_string(999'999 + count));
    EXPECT_EQ(profiles[1]["devices"][0]["name"].asString(), "Device 1000000");
  }
}

/// A household whose all-bands file has `line` over and over again, up to `size` bytes, before all that
/// counts.
void ExpectReadToItsEnd(const std::string& line, std::size_t size, rlim_t factor) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  std::string padding;
  while (padding.size() < size) padding += line;
  PutFirst(device, padding + "max_num_client=77\n");
  ExpectSuccess(UpdateFrom(device, "8000", WithMemoryFor(size, factor)));
  EXPECT_EQ(Document(device, "network.json.default")[0]["max_num_client"].asInt(), 77);
}

TEST(Limits, AnAccessPointFileOf50MegabytesIsReadToItsEnd) {
  for (const std::size_t size : {5 * kMegabyte, 50 * kMegabyte}) {
    ExpectReadToItsEnd("# nothing that anybody ever reads, over and over again\n", size, 2);
  }
}

TEST(Limits, AFileOf50MegabytesOfTheShortestEntriesIsReadToItsEnd) {
  for (const std::size_t size : {5 * kMegabyte, 50 * kMegabyte}) ExpectReadToItsEnd("a=\n", size, 7);
}

TEST(Limits, AScheduleOf10MegabytesArrivesWhole) {
  for (const std::size_t size : {kMegabyte, 10 * kMegabyte}) {
    lab::PrivateRoot device(Image("dual-band-standalone"));
    PutFirst(device, "schedule=" + std::string(size, '1') + "\n");
    ExpectSuccess(UpdateFrom(device, "8000", WithMemoryFor(size, 10)));
    EXPECT_EQ(Document(device, "network.json.default")[0]["schedule"].asString(), std::string(size, '1'));
  }
}

TEST(Limits, AnUnknownWordOf10MegabytesStillGivesItsLogLine) {
  for (const std::size_t size : {kMegabyte, 10 * kMegabyte}) {
    lab::PrivateRoot device(Image("dual-band-standalone"));
    PutFirst(device, "security=" + std::string(size, 'x') + "\n");
    const lab::RunResult run = UpdateFrom(device, "8000", WithMemoryFor(size, 5));
    EXPECT_EQ(run.status, 0);
    int lines = 0;
    for (const lab::LogLine& line : run.log) {
      if (line.message.starts_with("kelpwifiupdater:760 Invalid security mode: xxxx")) ++lines;
    }
    EXPECT_EQ(lines, 1);
    EXPECT_EQ(Document(device, "network.json.default")[0]["security"].asInt(), 4);
  }
}

TEST(Limits, AMailListOf10MegabytesOfAddressesIsSplit) {
  for (const std::size_t size : {kMegabyte, 10 * kMegabyte}) {
    lab::PrivateRoot device(Image("dual-band-standalone"));
    std::string list;
    std::size_t addresses = 0;
    for (; list.size() < size; ++addresses) list += "somebody@household.example,";
    list.pop_back();
    PutFirst(device, "guest_pwd_rotate_mail_list=" + list + "\n");
    const lab::RunResult run = UpdateFrom(device, "8000", WithMemoryFor(size, 20));
    EXPECT_EQ(run.status, 0);
    const Json::Value guest = Document(device, "network.json.default")[1];
    EXPECT_EQ(guest["guestPasswordRotation"]["mail_list"].size(), addresses);
  }
}

/// The documents by their names.
std::map<std::string, std::string> DocumentsOf(const lab::Tree& files) {
  std::map<std::string, std::string> documents;
  for (const auto& [path, entry] : files) {
    if (path.starts_with(kWifi) && path.find(".json") != std::string::npos) documents[path] = entry.content;
  }
  return documents;
}

class OddKind : public testing::TestWithParam<std::string> {
 protected:
  OddKind() { device_.Remove(GetParam()); }

  /// What stands at the path counts as unreadable, which is as good as missing. (Only that a missing file
  /// cannot be archived.)
  void ExpectTakenForMissing(const std::set<std::string>& missing = {GetParam()}) {
    lab::PrivateRoot without(Image("dual-band-standalone"));
    for (const std::string& path : missing) without.Remove(path);
    const auto expected = DocumentsOf(UpdateFrom(without, "8000").after);
    EXPECT_EQ(expected.size(), 5U);

    const lab::RunResult run = UpdateFrom(device_, "8000");
    EXPECT_FALSE(run.timed_out);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(DocumentsOf(run.after), expected);
  }

  lab::PrivateRoot device_{Image("dual-band-standalone")};
};

TEST_P(OddKind, AFifoIsTakenForMissing) {
  device_.MakeFifo(GetParam());
  ExpectTakenForMissing();
}

TEST_P(OddKind, ALinkLoopIsTakenForMissing) {
  device_.Link(GetParam(), GetParam());
  // Whether a filter list exists cannot be told then, and no profile is made without knowing.
  const std::set<std::string> lists{kFilters + "mf_deny.conf", kFilters + "mf_allow.conf"};
  ExpectTakenForMissing(lists.contains(GetParam()) ? lists : std::set{GetParam()});
}

TEST_P(OddKind, ADeviceNodeThatNeverEndsIsTakenForMissing) {
  const std::string node = device_.Path().native() + GetParam();
  const dev_t zeros = ::makedev(1, 5);
  if (::mknod(node.c_str(), S_IFCHR | 0600, zeros) != 0) GTEST_SKIP() << "needs root of the host";
  if (!lab::Descriptor(::open(node.c_str(), O_RDONLY)).IsOpen()) GTEST_SKIP() << "no device nodes in $TMPDIR";
  ExpectTakenForMissing();
}

TEST(Limits, AMegabyteOfNulsIsAFileWithoutEntries) {
  for (const std::string& file : {kAllBands, kFilters + "mf_deny.conf", kFilters + "mf.setting", kMesh}) {
    lab::PrivateRoot empty(Image("dual-band-standalone"));
    empty.Write(file, "");
    lab::PrivateRoot device(Image("dual-band-standalone"));
    device.Write(file, std::string(kMegabyte, '\0'));
    const lab::RunResult run = UpdateFrom(device, "8000", WithMemoryFor(kMegabyte, 3));
    EXPECT_EQ(run.status, 0) << file;
    EXPECT_EQ(DocumentsOf(run.after), DocumentsOf(UpdateFrom(empty, "8000").after)) << file;
  }
}

INSTANTIATE_TEST_SUITE_P(Files, OddKind,
                         testing::Values(kAllBands, kWifi + "wifi_wps", kFilters + "mf.info",
                                         kFilters + "mf.setting", kFilters + "mf_deny.conf",
                                         kFilters + "mf_allow.conf", kMesh, "/usr/kelp/etc/secret.key",
                                         "/etc/fw_env.config", "/boot/uboot.env",
                                         "/var/lock/fw_printenv.lock"));

TEST(Limits, AFileSizeThatIsLimitedIsAnOrdinaryFailure) {
  for (const auto& [image, build] :
       {std::pair("dual-band-standalone", "8000"), {"release-13-mesh", "9000"}}) {
    lab::PrivateRoot device(Image(image));
    lab::RunOptions options;
    options.rlimits = {{RLIMIT_FSIZE, 100}};
    const lab::RunResult run = UpdateFrom(device, build, options);
    ExpectFailure(run, build, "cannot write " + kWifi + "global.json: File too large");
    ExpectUntouched(run);
  }
}

TEST(Limits, HostileSectionNamesAreNamesLikeOthers) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  device.Write(kFilters + "mf_deny.conf",
               "[]]\nenable=yes\nmac=02:00:00:00:00:01\n"  // named "]"
               "[\nmac=02:00:00:00:00:02\n]\n"             // still "]", which has its address
               "[]\nenable=yes\nmac=02:00:00:00:00:03\n"   // named by nothing
               "[../../x]\nenable=yes\nmac=02:00:00:00:00:04\n");
  ExpectSuccess(UpdateFrom(device, "8000"));
  const Json::Value devices = Document(device, "misc.json")["macFilterProfiles"][0]["devices"];
  ASSERT_EQ(devices.size(), 3U);
  EXPECT_EQ(devices[0]["mac"].asString(), "02:00:00:00:00:01");
  EXPECT_EQ(devices[1]["mac"].asString(), "02:00:00:00:00:03");
  EXPECT_EQ(devices[2]["mac"].asString(), "02:00:00:00:00:04");
}

}  // namespace
}  // namespace end_to_end
