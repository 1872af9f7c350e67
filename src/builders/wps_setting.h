#pragma once

#include "legacy/update_context.h"
#include "platform/records/wps_setting.h"

namespace KELP::Wifi::Updater {

/// Fills `pin_enabled` and `pin` of `setting` from "/usr/kelp/etc/wifi/wifi_wps"; the PIN of a file that has
/// none is the device's default PIN. Throws what WifiUtils::GetDefaultWPS_AP_PIN throws: it is asked on every
/// run.
void BuildWPSPinSetting(const UpdateContext& context, WPSSetting& setting);

}  // namespace KELP::Wifi::Updater
