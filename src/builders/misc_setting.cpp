#include "builders/misc_setting.h"
#include <string>

#include "builders/broadcast_detect_setting.h"
#include "builders/mac_filter_profiles.h"
#include "legacy/update_context.h"
#include "platform/records/misc_setting.h"

namespace KELP::Wifi::Updater {

Daemon::MiscSetting BuildMiscSetting(const UpdateContext& context, const std::string& net_topology) {
  Daemon::MiscSetting setting;
  setting.netTopology = net_topology;
  setting.broadcastDetect = BuildBroadcastDetectSetting(context);
  setting.macFilterProfiles = BuildMACFilterProfiles();
  return setting;
}

}  // namespace KELP::Wifi::Updater
