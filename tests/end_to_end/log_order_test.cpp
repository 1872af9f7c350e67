// A device on which nothing is as it should be: each complaint once, where support looks for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "lab/text/key_value.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"
#include "tests/support/test_device.h"

namespace end_to_end {
namespace {

using lab::KeyValueText;
using ::testing::ElementsAreArray;
using ::testing::Matcher;
using ::testing::StartsWith;
using testing_support::Entries;
using testing_support::Error;
using testing_support::PrintLog;
using testing_support::Warning;

using Lines = std::vector<Matcher<std::string>>;

/// A dual-band router of its own: radios 0, 1 and 2. Its boot environment cannot be found.
class LogOrder : public ::testing::Test {
 protected:
  LogOrder() {
    device_.Write(kMesh, "{\"repeater_nodes\": []}");
    for (const char* path : {"mf.info", "mf.setting", "mf_guest.info"}) device_.Write(kFilters + path, "");
    for (const char* path : {"lbd.conf", "lbd.guest.conf", "wifi_nvram", "wifi_wps"})
      device_.Write(kWifi + path, "");
    device_.Write("/proc/sys/kernel/kelp_mac_address4", "0ad1c6e57b04\n");
    device_.Write("/proc/sys/kernel/kelp_mac_address5", "0ad1c6e57b05\n");
    WriteInformation({{"net_topology", "router"}, {"country_code", "US"}, {"mesh_swap_backhaul_band", "no"}});
  }

  void WriteInformation(const Entries& entries) {
    device_.Write(kInformation,
                  "kelpbios=orchid\nmesh_network_role=ap\nwps_pin=28805514\n" + KeyValueText(entries));
  }

  void WriteAccessPoint(int radio, const Entries& entries) {
    const std::vector<std::string> addresses = {"00:00:00:00:00:00", "0a:d1:c6:e5:7b:04",
                                                "0a:d1:c6:e5:7b:05"};
    device_.Write(kWifi + "wifi_ap_" + addresses.at(static_cast<std::size_t>(radio)), KeyValueText(entries));
  }

  void ExpectLog(const Lines& lines) {
    const lab::RunResult run = UpdateFrom(device_, "8000");
    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAreArray(lines));
  }

  lab::PrivateRoot device_;
};

void Add(Lines& lines, std::initializer_list<std::pair<int, std::string>> errors) {
  for (const auto& [number, message] : errors) lines.push_back(Error(number, message));
}

TEST_F(LogOrder, UnknownWordsOfEveryKind) {
  device_.Remove(kMesh);
  WriteInformation({{"net_topology", "%d%n"}, {"country_code", "%s"}});
  device_.MakeDirectory(kFilters + "mf_deny.conf");
  device_.MakeDirectory(kFilters + "mf_allow.conf");
  for (const int radio : {0, 1, 2}) {
    const std::string n = std::to_string(radio);
    WriteAccessPoint(radio, {{"security", "security " + n},
                             {"ssid", "!ssid " + n},
                             {"password", "secret " + n},
                             {"pmf_mode", "pmf " + n},
                             {"guest_security", "guest security " + n},
                             {"guest_ssid", "!guest ssid " + n},
                             {"guest_password", "guest secret " + n},
                             {"guest_pmf_mode", "never read"},
                             {"guest_pwd_rotate_date_type", "type " + n},
                             {"guest_pwd_rotate_strength", "strength " + n},
                             {"bandwidth", "bandwidth " + n},
                             {"mode", "mode " + n},
                             {"tx_power", "power " + n},
                             {"smartconnect_enabled", "yes"}});
  }

  Lines lines = {
      StartsWith(Error(140, "Failed to get mesh role, error: ")),
      Warning(229, "Start to migrate config from 1.2.5 to 1.3"),
      Error(280,
            "Failed to country code, use US to instead. error: Failed to convert string to enum class "
            "[N4KELP4Wifi11CountryCodeE]: %s: runtime error"),
      StartsWith(Error(300, "Failed to get backhaul swap, default false: ")),
      Error(168, "Failed to get network context: unsupported net_topology: %s%d%n"),
      Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_deny.conf"),
      Error(530, "Failed to enum section from /etc/hostapd/mac_filter/mf_allow.conf")};
  for (const std::string n : {"0", "1", "2"}) {
    Add(lines, {{760, "Invalid security mode: security " + n + ", select wpa2."},
                {575, "Failed to decode base64 string: !ssid " + n},
                {589, "Failed to decrypt ssid with secret " + n},
                {776, "Invalid pmf mode: pmf " + n + ", select disabled."}});
  }
  for (const std::string n : {"0", "1", "2"}) {
    Add(lines, {{760, "Invalid security mode: guest security " + n + ", select wpa2."},
                {575, "Failed to decode base64 string: !guest ssid " + n},
                {589, "Failed to decrypt ssid with guest secret " + n},
                {776, "Invalid pmf mode: pmf " + n + ", select disabled."},
                {855, "Invalid mode: type " + n + ", select regular."},
                {869, "Invalid value: strength " + n + ", select medium."}});
  }
  for (const std::string n : {"1", "2"}) {
    Add(lines, {{838, "Invalid bandwidth: bandwidth " + n + ", select 20_40."},
                {795, "Invalid wireless mode: mode " + n + "."},
                {811, "Invalid tx power: power " + n + ", select high."},
                {896, "Failed to call KELPUSBGetUSB3DisableUbootEnv"}});
  }
  Add(lines, {{811, "Invalid tx power: power 0, select high."}});  // smart connect, once for all radios
  ExpectLog(lines);
}

// Every word is missing: all complaints but that about the SSID, which decodes to nothing.
TEST_F(LogOrder, EmptyAccessPointFiles) {
  for (const int radio : {0, 1, 2}) WriteAccessPoint(radio, {});

  Lines lines = {Warning(229, "Start to migrate config from 1.2.5 to 1.3")};
  for (int radio = 0; radio < 3; ++radio) {
    Add(lines, {{760, "Invalid security mode: , select wpa2."},
                {589, "Failed to decrypt ssid with "},
                {776, "Invalid pmf mode: , select disabled."}});
  }
  for (int radio = 0; radio < 3; ++radio) {
    Add(lines, {{760, "Invalid security mode: , select wpa2."},
                {589, "Failed to decrypt ssid with "},
                {776, "Invalid pmf mode: , select disabled."},
                {855, "Invalid mode: , select regular."},
                {869, "Invalid value: , select medium."}});
  }
  for (int radio = 1; radio < 3; ++radio) {
    Add(lines, {{838, "Invalid bandwidth: , select 20_40."},
                {795, "Invalid wireless mode: ."},
                {811, "Invalid tx power: , select high."},
                {896, "Failed to call KELPUSBGetUSB3DisableUbootEnv"}});
  }
  ExpectLog(lines);
}

// 40 MHz forced on the 2.4 GHz radio leaves its bandwidth word unread; on the other radio the word counts.
TEST_F(LogOrder, ForcedBandwidthHasNoLine) {
  const Entries words = {{"security", "OWE"},
                         {"pmf_mode", "capable"},
                         {"guest_security", "disabled"},
                         {"guest_pwd_rotate_date_type", "1"},
                         {"guest_pwd_rotate_strength", "low"},
                         {"force_24g_40mhz", "yes"},
                         {"mode", "n"},
                         {"tx_power", "low"}};
  for (const int radio : {0, 1, 2}) WriteAccessPoint(radio, words);

  Lines lines = {Warning(229, "Start to migrate config from 1.2.5 to 1.3")};
  for (int secret = 0; secret < 6; ++secret) Add(lines, {{589, "Failed to decrypt ssid with "}});
  Add(lines, {{896, "Failed to call KELPUSBGetUSB3DisableUbootEnv"},
              {838, "Invalid bandwidth: , select 20_40."},
              {896, "Failed to call KELPUSBGetUSB3DisableUbootEnv"}});
  ExpectLog(lines);
}

TEST_F(LogOrder, TextOfTheDeviceIsNeverAFormat) {
  const std::string word = "%s%n%d%1000000d%";
  for (const int radio : {0, 1, 2}) {
    WriteAccessPoint(radio, {{"security", word}, {"ssid", word}, {"password", word}, {"pmf_mode", word}});
  }

  const lab::RunResult run = UpdateFrom(device_, "8000");

  ExpectSuccess(run);
  const testing_support::LogLines log = PrintLog(run.log);
  EXPECT_THAT(log,
              ::testing::Contains(Error(760, "Invalid security mode: " + word + ", select wpa2.")).Times(3));
  EXPECT_THAT(log, ::testing::Contains(Error(575, "Failed to decode base64 string: " + word)).Times(3));
  EXPECT_THAT(log, ::testing::Contains(Error(589, "Failed to decrypt ssid with " + word)).Times(3));
  EXPECT_THAT(log,
              ::testing::Contains(Error(776, "Invalid pmf mode: " + word + ", select disabled.")).Times(6));
}

}  // namespace
}  // namespace end_to_end
