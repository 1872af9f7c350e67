#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/records/mac_filter.h"

namespace KELP::Wifi {

struct BroadcastDetectSetting {
  std::vector<MACFilterDevice> devices;
  bool enabled = false;
  std::int32_t threshold = 0;

  bool operator==(const BroadcastDetectSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(BroadcastDetectSetting, (), (devices, enabled, threshold))

}  // namespace KELP::Wifi

namespace KELP::Wifi::Daemon {

/// What belongs to no single network or radio, the content of misc.json.
struct MiscSetting {
  std::string netTopology;  // "default", "bridge" or "repeater"
  BroadcastDetectSetting broadcastDetect;
  std::vector<MACFilterProfile> macFilterProfiles;

  bool operator==(const MiscSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(MiscSetting, (), (netTopology, broadcastDetect, macFilterProfiles))

}  // namespace KELP::Wifi::Daemon
