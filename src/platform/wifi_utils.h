#pragma once

#include <string>

namespace KELP::Wifi::Util::WifiUtils {

/// The device's factory default WPS PIN: the information store's key "wps_pin", as it stands. It is never
/// derived from a MAC address: such a PIN can be computed by a neighbour. Throws as
/// SDKUtils::InfoGetKeyValue.
std::string GetDefaultWPS_AP_PIN();

}  // namespace KELP::Wifi::Util::WifiUtils
