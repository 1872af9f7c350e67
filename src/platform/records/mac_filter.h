#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/mac_address.h"

namespace KELP::Wifi {

/// One filtered station.
struct MACFilterDevice {
  std::string name;
  Util::MACAddress mac;

  bool operator==(const MACFilterDevice&) const = default;
};
BOOST_DESCRIBE_STRUCT(MACFilterDevice, (), (name, mac))

enum class MACFilterPolicy : std::int32_t {
  Allow = 0,  // only listed stations are admitted
  Deny = 1,   // listed stations are refused
};

/// One filter list bound to one network.
struct MACFilterProfile {
  std::int32_t id = 0;
  std::string name;
  MACFilterPolicy policy{};
  std::vector<MACFilterDevice> devices;

  bool operator==(const MACFilterProfile&) const = default;
};
BOOST_DESCRIBE_STRUCT(MACFilterProfile, (), (id, name, policy, devices))

}  // namespace KELP::Wifi
