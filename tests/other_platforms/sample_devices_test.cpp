// The program over the second platform, on the sample devices: everything is stored, spelt and told otherwise
// there, and what the program does is the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "lab/text/key_value.h"
#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace other_platforms {
namespace {

using end_to_end::kWifi;
using testing_support::Error;
using testing_support::LogLines;
using testing_support::PrintLog;
using testing_support::Warning;

const std::string kFolder = "/var/second/";
constexpr mode_t kModeOfDocuments = 0640;

struct Sample {
  std::string device;
  std::string build;
  std::string topology;  // none where no network document is written
  LogLines log;
  int status = 0;
};

std::ostream& operator<<(std::ostream& out, const Sample& sample) {
  return out << sample.device;
}

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The information store of the other platform, with what the device's holds.
std::string Facts(const lab::PrivateRoot& device) {
  std::string facts;
  for (const lab::LegacyEntry& entry : lab::ParseKeyValueText(device.Read(end_to_end::kInformation))) {
    facts += entry.key + " -> " + entry.value + '\n';
  }
  return facts;
}

/// A sample device as one with the second platform in its firmware.
class SecondDevice : public lab::PrivateRoot {
 public:
  explicit SecondDevice(const std::string& name) : lab::PrivateRoot(end_to_end::Image(name)) {
    Write(kFolder + "facts", Facts(*this));
    Remove(end_to_end::kInformation);
    Remove("/usr/kelp/etc/secret.key");
    Remove("/etc/fw_env.config");
  }
};

/// The run as one on a device that never had a folder of the second platform, and whose documents have the
/// mode that the stand-in gives them: so it can be compared with the run on the sample device.
lab::RunResult InTermsOfTheStandIn(lab::RunResult run, const std::string& device) {
  const lab::Tree original = lab::PrivateRoot(end_to_end::Image(device)).Snapshot();
  for (lab::Tree* tree : {&run.before, &run.after}) {
    std::erase_if(*tree, [](const auto& entry) { return (entry.first + '/').starts_with(kFolder); });
    for (const char* path : {"/usr/kelp/etc/info.conf", "/usr/kelp/etc/secret.key", "/etc/fw_env.config"}) {
      tree->insert(*original.find(path));
    }
  }
  for (auto& [path, entry] : run.after) {
    const bool is_written = path.ends_with(".json") || path.find(".json.") != std::string::npos;
    if (is_written && entry.mode == kModeOfDocuments) entry.mode = 0600;
  }
  return run;
}

class SecondPlatform : public ::testing::TestWithParam<Sample> {};

TEST_P(SecondPlatform, IsMigratedAsTheContractImplies) {
  const Sample& sample = GetParam();
  SecondDevice device(sample.device);

  const lab::RunResult run = end_to_end::UpdateFrom(device, sample.build);

  EXPECT_EQ(run.signal, 0);
  EXPECT_EQ(run.status, sample.status) << run.err;
  EXPECT_EQ(PrintLog(run.log), sample.log);

  std::vector<std::string> documents{"global.json"};
  if (!sample.topology.empty()) {
    documents.insert(documents.end(),
                     {"misc.json", "radio.json", "wps.json", "network.json." + sample.topology});
  }
  std::string journal;
  std::string texts;
  for (const std::string& name : documents) {
    journal += kWifi + name + '\n';
    const auto document = run.after.find(kWifi + name);
    ASSERT_NE(document, run.after.end()) << name;
    EXPECT_EQ(document->second.mode, kModeOfDocuments) << name;
    texts += document->second.content;
  }
  EXPECT_EQ(run.after.at(kFolder + "journal").content, journal);
  EXPECT_EQ(texts, TextOf(KELP_EXPECTED_ON_SECOND_PLATFORM "/" + sample.device));
  end_to_end::ExpectedRun(sample.device).ExpectPaths(InTermsOfTheStandIn(run, sample.device));
}

const std::string kCountryError =
    "Failed to country code, use US to instead. error: Failed to convert string to enum class "
    "[N4KELP4Wifi11CountryCodeE]: EU: second platform, error 2";
const std::string kRenameError =
    "filesystem error: cannot rename: No such file or directory [/usr/kelp/etc/wifi/lbd.guest.conf] "
    "[/usr/kelp/etc/wifi/legacy/lbd.guest.conf]";

INSTANTIATE_TEST_SUITE_P(
    All, SecondPlatform,
    ::testing::Values(
        Sample{"dual-band-standalone",
               "8000",
               "default",
               {Warning(229, "Start to migrate config from 1.2.5 to 1.3")}},
        Sample{"dual-band-bridge",
               "8000",
               "bridge",
               {Warning(229, "Start to migrate config from 1.2.5 to 1.3"),
                Error(589, "Failed to decrypt ssid with ")}},
        Sample{"tri-band-mesh-router",
               "8000",
               "default",
               {Warning(229, "Start to migrate config from 1.2.5 to 1.3")}},
        Sample{"tri-band-repeater",
               "8000",
               "repeater",
               {Warning(229, "Start to migrate config from 1.2.5 to 1.3"), Error(280, kCountryError),
                Error(760, "Invalid security mode: WPA2, select wpa2."),
                Error(855, "Invalid mode: , select regular."),
                Error(838, "Invalid bandwidth: 40MHZ, select 20_40.")}},
        Sample{"failing-archive",
               "8000",
               "default",
               {Warning(229, "Start to migrate config from 1.2.5 to 1.3"),
                Error(168, "Failed to get network context: unsupported net_topology: %srepeater"),
                Error(954, "Failed to update config, error: " + kRenameError + ", buildNumber: 8000")},
               1},
        Sample{"release-13-mesh", "9000", "", {}}),
    [](const auto& sample) {
      std::string name = sample.param.device;
      for (char& byte : name) byte = byte == '-' ? '_' : byte;
      return name;
    });

TEST(SecondPlatformFailures, ModelThatNobodyKnowsIsToldInThePlatformsWords) {
  SecondDevice device("dual-band-standalone");
  device.Write(kFolder + "facts", "");
  const lab::RunResult run = end_to_end::UpdateFrom(device, "8000");
  end_to_end::ExpectFailure(run, "8000", "nobody knows kelpbios: second platform, error 2");
  EXPECT_EQ(
      PrintLog(run.log).front(),
      Error(140, "Failed to get mesh role, error: nobody knows mesh_network_role: second platform, error 2"));
}

TEST(SecondPlatformFailures, StationThatIsNoneEmptiesTheProfiles) {
  SecondDevice device("dual-band-standalone");
  device.Write("/etc/hostapd/mac_filter/mf_deny.conf", "[a]\nenable=yes\nmac=none\n");
  const lab::RunResult run = end_to_end::UpdateFrom(device, "8000");
  end_to_end::ExpectSuccess(run);
  EXPECT_EQ(run.after.at(kWifi + "misc.json").content, "default, detect 1 at 120\n");
}

TEST(SecondPlatformFailures, AnyPositiveAnswerSwitchesUSB3Off) {
  SecondDevice device("dual-band-standalone");
  device.Write(kFolder + "no_usb3", "");
  const lab::RunResult run = end_to_end::UpdateFrom(device, "8000");
  EXPECT_EQ(run.after.at(kWifi + "radio.json").content,
            "radio 1 channels 6 0 bandwidth 2 mode 1 power 1 dfs 0 usb3 0 flags 01\n"
            "radio 2 channels 100 0 bandwidth 3 mode 5 power 2 dfs 1 usb3 0 flags 01\n");
}

TEST(SecondPlatformFailures, DocumentThatIsNotSavedEndsTheRunInThePlatformsWords) {
  SecondDevice device("dual-band-standalone");
  device.MakeDirectory(kWifi + "radio.json");
  const lab::RunResult run = end_to_end::UpdateFrom(device, "8000");
  end_to_end::ExpectFailure(run, "8000", kWifi + "radio.json is not saved: second platform, error 2");
  EXPECT_TRUE(run.after.contains(kWifi + "misc.json"));
  EXPECT_FALSE(run.after.contains(kWifi + "wps.json"));
}

// Half a filter would admit or refuse the wrong stations unnoticed.
TEST(SecondPlatformMemory, LeavesNoListRatherThanHalfAListWhereMemoryRunsOut) {
  if (lab::kSanitizedBuild) GTEST_SKIP() << "the sanitizers reserve an address space of their own";
  std::string list;
  for (unsigned i = 0; i < 400; ++i) {
    list += "[" + std::string(900, 'n') + std::to_string(1000 + i) + "]\nenable=yes\nmac=02:00:00:00:00:01\n";
  }
  int whole = 0;
  int none = 0;
  for (rlim_t limit = 262'144; whole < 3; limit += 8192) {
    ASSERT_LT(limit, 16'000'000U);
    SecondDevice device("dual-band-standalone");
    device.Write(end_to_end::kFilters + "mf_deny.conf", list);
    device.Remove(end_to_end::kFilters + "mf_allow.conf");
    lab::RunOptions options;
    options.rlimits = {{RLIMIT_DATA, limit}};
    const lab::RunResult run = end_to_end::UpdateFrom(device, "8000", options);
    const auto misc = run.after.find(kWifi + "misc.json");
    if (misc == run.after.end()) continue;
    const bool has_list = misc->second.content.find("Primary Network - Deny") != std::string::npos;
    ++(has_list ? whole : none);
    if (has_list) {
      EXPECT_THAT(misc->second.content, ::testing::HasSubstr(" of 400 ")) << limit;
    }
  }
  EXPECT_GT(none, 0);
}

}  // namespace
}  // namespace other_platforms
