#include "builders/network_setting.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "builders/feature_setting.h"
#include "builders/guest_password_rotation.h"
#include "legacy/interface_mac.h"
#include "legacy/legacy_value.h"
#include "legacy/radios.h"
#include "legacy/update_context.h"
#include "platform/records/feature_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi::Updater {

std::set<std::string> AssembleNetworkSetting(const UpdateContext& context, NetworkSetting& network,
                                             const std::vector<Util::RadioFrequency>& radios,
                                             std::int32_t mac_filter_profile_id) {
  const bool is_guest = network.kind == kGuestNetwork;
  std::set<std::string> files;
  for (const Util::RadioFrequency radio : radios) {
    const std::string file = GetAccessPointFilePath(context, radio);
    FeatureSetting setting = BuildFeatureSetting(context, file, radio, mac_filter_profile_id, is_guest);
    if (is_guest) setting.guestPasswordRotation = BuildGuestPasswordRotation(file);

    if (radio == kAllBands) {
      network.smartConnect =
          ReadLegacyFlag(file, is_guest ? "smartconnect_guest_enabled" : "smartconnect_enabled");
      network.allBands = std::move(setting);
    } else {
      network.featureSettings.push_back(std::move(setting));
    }
    files.insert(file);
  }
  return files;
}

}  // namespace KELP::Wifi::Updater
