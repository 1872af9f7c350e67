#include "builders/wps_setting.h"

#include <string>

#include "legacy/legacy_value.h"
#include "legacy/update_context.h"
#include "platform/records/wps_setting.h"
#include "platform/wifi_utils.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_wps";

}  // namespace

void BuildWPSPinSetting(const UpdateContext& /*context*/, WPSSetting& setting) {
  setting.pin_enabled = ReadLegacyFlag(kFile, "is_wps_ap_pin_enabled");
  const std::string default_pin = Util::WifiUtils::GetDefaultWPS_AP_PIN();
  setting.pin = ReadLegacyValue(kFile, "wps_ap_pin", default_pin);
}

}  // namespace KELP::Wifi::Updater
