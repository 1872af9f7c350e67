#pragma once

#include <string>

namespace KELP::Wifi::Util {

class WifiUtils {
 public:
  static std::string GetDefaultWPS_AP_PIN();
};

}  // namespace KELP::Wifi::Util
