#pragma once

#include <array>
#include <string>
#include <string_view>

namespace lab {

// Where the settings of a device are before and after a migration. The lab names them here only.
inline constexpr const char* kWifiFolder = "/usr/kelp/etc/wifi/";
inline constexpr const char* kArchiveFolder = "/usr/kelp/etc/wifi/legacy/";
inline constexpr const char* kInformationStore = "/usr/kelp/etc/info.conf";
inline constexpr const char* kSecretKeyFile = "/usr/kelp/etc/secret.key";
inline constexpr const char* kAccessPointPrefix = "/usr/kelp/etc/wifi/wifi_ap_";
inline constexpr const char* kAllBandsFile = "/usr/kelp/etc/wifi/wifi_ap_00:00:00:00:00:00";
inline constexpr const char* kWPSFile = "/usr/kelp/etc/wifi/wifi_wps";
inline constexpr const char* kMeshFile = "/usr/kelp/etc/mesh/mesh.conf";
inline constexpr const char* kMeshRoleFile = "/usr/kelp/etc/mesh/mesh_role.conf";
inline constexpr const char* kFilterFolder = "/etc/hostapd/mac_filter/";
inline constexpr const char* kPrimaryPolicyFile = "/etc/hostapd/mac_filter/mf.info";
inline constexpr const char* kGuestPolicyFile = "/etc/hostapd/mac_filter/mf_guest.info";
inline constexpr const char* kBroadcastFile = "/etc/hostapd/mac_filter/mf.setting";
inline constexpr const char* kDenyList = "/etc/hostapd/mac_filter/mf_deny.conf";
inline constexpr const char* kAllowList = "/etc/hostapd/mac_filter/mf_allow.conf";
inline constexpr const char* kModelFile = "/usr/kelp/etc/wifi/model.json";
inline constexpr const char* kCountryFile = "/usr/kelp/etc/wifi/country.json";
inline constexpr const char* kBackhaulFile = "/usr/kelp/etc/wifi/backhaul.json";

/// The documents in kWifiFolder, and the names that the network document has, one for each topology.
inline constexpr std::array kDocuments{"global.json", "misc.json", "radio.json", "wps.json"};
inline constexpr const char* kNetworkDocumentPrefix = "network.json.";
inline constexpr std::array kNetworkDocuments{"network.json.default", "network.json.bridge",
                                              "network.json.repeater"};

/// The files that a migration from 1.2.5 archives besides the access-point files, in the order of the
/// archive.
inline constexpr std::array kArchivedFiles{kPrimaryPolicyFile,
                                           kBroadcastFile,
                                           kGuestPolicyFile,
                                           "/usr/kelp/etc/wifi/lbd.conf",
                                           "/usr/kelp/etc/wifi/lbd.guest.conf",
                                           "/usr/kelp/etc/wifi/wifi_nvram",
                                           kWPSFile};

/// Whether `name` is that of a document, without its directory.
bool IsDocumentName(std::string_view name);

/// The name of the file at `path` without its directory.
std::string BaseName(const std::string& path);

/// What an upgrade from a build asks for.
enum class Request {
  Everything,   // below 8228: the migration of a whole household
  GlobalFiles,  // 8228 to 9224: that of the global files of 1.3
  Nothing,      // from 9225 on
  Unknown,      // no number
};
inline constexpr int kFirstBuildOf13 = 8228;
inline constexpr int kFirstBuildOfNow = 9225;

/// By the number at the beginning of the text; blanks before it are skipped.
Request RequestOf(std::string_view build);

/// The security numbers in the documents that mean a network with an authentication server.
constexpr bool IsEnterprise(int security) {
  return security >= 8 && security <= 11;
}

}  // namespace lab
