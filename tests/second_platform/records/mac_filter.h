#pragma once

#include <string>
#include <vector>

#include "platform/mac_address.h"

namespace KELP::Wifi {

struct MACFilterDevice {
  std::string name;
  Util::MACAddress mac;
};

struct MACFilterProfile {
  MACFilterProfile() {}

  int id = -1;
  std::string name;
  enum Kind { kLetIn, kKeepOut } policy = kLetIn;
  std::vector<MACFilterDevice> devices;
};

}  // namespace KELP::Wifi
