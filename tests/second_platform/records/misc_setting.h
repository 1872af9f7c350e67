#pragma once

#include <string>
#include <vector>

#include "platform/records/mac_filter.h"

namespace KELP::Wifi {

struct BroadcastDetectSetting {
  std::vector<MACFilterDevice> devices;
  bool enabled = false;
  int threshold = 0;
};

namespace Daemon {

struct MiscSetting {
  std::vector<MACFilterProfile> macFilterProfiles;
  BroadcastDetectSetting broadcastDetect;
  std::string netTopology;
};

}  // namespace Daemon

}  // namespace KELP::Wifi
