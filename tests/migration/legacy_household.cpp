#include "tests/migration/legacy_household.h"

#include "lab/images/boot_environment.h"
#include "lab/images/secret_seal.h"
#include "tests/support/json_text.h"

namespace testing_support {
namespace {

constexpr const char* kKey = "8f1d5c3b7a9e02644d6b8890aabbccddeeff00112233445566778899a0b1c2d3";
constexpr std::string_view kWifiFolder = "/usr/kelp/etc/wifi/";
constexpr std::string_view kArchive = "/usr/kelp/etc/wifi/legacy/";

}  // namespace

LegacyHousehold::LegacyHousehold() {
  WriteInfo({{"kelpbios", "orchid"},
             {"country_code", "DE"},
             {"mesh_swap_backhaul_band", "no"},
             {"mesh_network_role", "router"},
             {"net_topology", "router"},
             {"wps_pin", "41730582"}});
  Files().Write("/usr/kelp/etc/secret.key", kKey);
  Files().Write("/usr/kelp/etc/mesh/mesh.conf", R"({"repeater_nodes": []})");
  lab::InstallBootEnvironment(Files(), {});
  WriteKernelMAC(4, "001132000004");
  WriteKernelMAC(5, "001132000005");
  for (const char* file : {kAllBandsFile, k24File, k5File}) WriteAccessPoint(file);
  for (const char* name : {"lbd.conf", "lbd.guest.conf", "wifi_nvram"}) {
    Files().Write(std::string(kWifiFolder) + name, std::string("the old ") + name);
  }
  WriteEntries("/usr/kelp/etc/wifi/wifi_wps", {{"is_wps_ap_pin_enabled", "yes"}, {"wps_ap_pin", "12345670"}});
  WriteEntries("/etc/hostapd/mac_filter/mf.info", {{"policy", "deny"}});
  WriteEntries("/etc/hostapd/mac_filter/mf_guest.info", {{"policy", "disabled"}, {"old", "guest"}});
  WriteEntries("/etc/hostapd/mac_filter/mf.setting",
               {{"broadcast_detect_enabled", "yes"}, {"broadcast_threshold", "64"}});
  Files().Write("/etc/hostapd/mac_filter/mf_deny.conf", "[1]\nenable=yes\ndesc=TV\nmac=00:11:32:AA:BB:CC\n");
}

void LegacyHousehold::JoinMesh() {
  context.meshRole = KELP::Wifi::Updater::MeshRole::MeshRouter;
  WriteAccessPoint(kSecondMeshFile);
}

void LegacyHousehold::WriteAccessPoint(const std::string& file, const Entries& entries) {
  Entries all = entries;
  const std::string secret = lab::SealSecret("secret of " + file, kKey, std::string_view(file).substr(0, 24));
  all.insert(all.end(), {{"security", "PERSONAL_WPA3"},
                         {"guest_security", "OWE"},
                         {"password", secret},
                         {"guest_password", secret},
                         {"pmf_mode", "capable"},
                         {"guest_pwd_rotate_date_type", "0"},
                         {"guest_pwd_rotate_strength", "low"},
                         {"bandwidth", "20MHZ"},
                         {"mode", "n"},
                         {"tx_power", "medium"}});
  WriteEntries(file, all);
}

Json::Value LegacyHousehold::Document(const std::string& name) {
  return ParseJson(Files().Read(std::string(kWifiFolder) + name));
}

bool LegacyHousehold::HasDocument(const std::string& name) {
  return Files().Exists(std::string(kWifiFolder) + name);
}

std::vector<std::string> LegacyHousehold::Archived() {
  std::vector<std::string> names;
  for (const auto& [path, entry] : Files().Snapshot()) {
    if (path.starts_with(kArchive)) names.push_back(path.substr(kArchive.size()));
  }
  return names;
}

}  // namespace testing_support
