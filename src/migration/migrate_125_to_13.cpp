#include "migration/migrate_125_to_13.h"
#include <json/value.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "base/log.h"
#include "builders/mac_filter_profiles.h"
#include "builders/misc_setting.h"
#include "builders/network_setting.h"
#include "builders/radio_setting.h"
#include "builders/wps_setting.h"
#include "legacy/device_facts.h"
#include "legacy/interface_mac.h"
#include "legacy/legacy_value.h"
#include "legacy/radios.h"
#include "legacy/update_context.h"
#include "legacy/vocabularies.h"
#include "migration/document_paths.h"
#include "migration/global_settings.h"
#include "migration/legacy_archive.h"
#include "platform/json_serializer.h"
#include "platform/json_util.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_frequency.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"

namespace KELP::Wifi::Updater {
namespace {

using Util::RadioFrequency;

using Networks = std::array<NetworkSetting, 2>;  // the primary network, then the guest network

std::set<std::string> FixedLegacyFiles() {
  return {
      "/etc/hostapd/mac_filter/mf.info",       "/etc/hostapd/mac_filter/mf.setting",
      "/etc/hostapd/mac_filter/mf_guest.info", "/usr/kelp/etc/wifi/lbd.conf",
      "/usr/kelp/etc/wifi/lbd.guest.conf",     "/usr/kelp/etc/wifi/wifi_nvram",
      "/usr/kelp/etc/wifi/wifi_wps",
  };
}

Networks SeedNetworks() {
  Networks networks;
  auto& [primary, guest] = networks;
  primary.number = 0;
  primary.name = "Primary Network";
  primary.kind = kPrimaryNetwork;
  guest.number = 1;
  guest.name = "Guest Network";
  guest.kind = kGuestNetwork;
  return networks;
}

/// The settings of each radio; the first one whose file switches WPS on gives its band.
std::vector<RadioSetting> BuildRadioSettings(const UpdateContext& context,
                                             const std::vector<RadioFrequency>& radios, WPSSetting& wps) {
  std::vector<RadioSetting> settings;
  for (const RadioFrequency radio : radios) {
    if (radio == kAllBands) continue;
    settings.push_back(BuildRadioSetting(context, radio));
    if (wps.enabled) continue;
    wps.enabled = ReadLegacyFlag(GetAccessPointFilePath(context, radio), "ap_enable_wps");
    if (wps.enabled) wps.band = radio;
  }
  return settings;
}

template <typename Record>
void Save(const std::string& document, const Record& record) {
  Util::JsonUtil::SaveJsonToFile(document, Util::JsonSerializer::Serialize<Record>(record));
}

template <typename Records>
void SaveEach(const std::string& document, const Records& records) {
  Json::Value array(Json::arrayValue);
  for (const auto& record : records) {
    array.append(Util::JsonSerializer::Serialize<typename Records::value_type>(record));
  }
  Util::JsonUtil::SaveJsonToFile(document, array);
}

/// With smart connect the all-bands file decides what the radios' own files decide otherwise.
void ApplySmartConnect(const UpdateContext& context, WPSSetting& wps, std::vector<RadioSetting>& radios) {
  const std::string file = GetAccessPointFilePath(context, kAllBands);
  wps.enabled = ReadLegacyFlag(file, "ap_enable_wps");
  wps.band = kAllBands;
  const bool allow_dfs_channels = ReadLegacyFlag(file, "allow_dfs_channels");
  const std::int32_t tx_power = ToTxPower(ReadLegacyValue(file, "tx_power", ""));
  for (RadioSetting& radio : radios) {
    radio.allowDFSChannels = allow_dfs_channels;
    radio.txPower = tx_power;
  }
}

}  // namespace

void Migrate125To13(const UpdateContext& context) {
  if (std::filesystem::exists(kGlobalDocument) || std::filesystem::exists(kMiscDocument)) {
    Log(LOG_ERR, "%s:%d New config is existed, so stop migrating.", 225);
    return;
  }
  Log(LOG_WARNING, "%s:%d Start to migrate config from 1.2.5 to 1.3", 229);
  MigrateGlobalSettings(context);
  MigrateLegacyWifiConfig(context);
}

void MigrateLegacyWifiConfig(const UpdateContext& context) {
  const std::string topology = GetNetTopology(context);
  const std::vector<RadioFrequency> radios = GetRadioFrequencies(context);
  std::set<std::string> legacy_files = FixedLegacyFiles();
  Networks networks = SeedNetworks();

  const Daemon::MiscSetting misc = BuildMiscSetting(context, topology);
  WPSSetting wps;
  BuildWPSPinSetting(context, wps);

  for (NetworkSetting& network : networks) {
    const bool is_guest = network.kind == kGuestNetwork;
    const std::int32_t profile_id = FindMACFilterProfileId(misc.macFilterProfiles, is_guest);
    legacy_files.merge(AssembleNetworkSetting(context, network, radios, profile_id));
  }

  std::vector<RadioSetting> radio_settings = BuildRadioSettings(context, radios, wps);
  if (networks.front().smartConnect) ApplySmartConnect(context, wps, radio_settings);

  Save(kMiscDocument, misc);
  SaveEach(kRadioDocument, radio_settings);
  Save(kWPSDocument, wps);
  SaveEach(kNetworkDocumentPrefix + topology, networks);

  ArchiveLegacyFiles(legacy_files);
}

}  // namespace KELP::Wifi::Updater
