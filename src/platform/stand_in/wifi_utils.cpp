#include "platform/wifi_utils.h"

#include "platform/sdk_utils.h"

namespace KELP::Wifi::Util::WifiUtils {

std::string GetDefaultWPS_AP_PIN() {
  return SDKUtils::InfoGetKeyValue("wps_pin");
}

}  // namespace KELP::Wifi::Util::WifiUtils
