#pragma once

#include "legacy/update_context.h"
#include "platform/records/misc_setting.h"

namespace KELP::Wifi::Updater {

/// From "/etc/hostapd/mac_filter/mf.setting", all or nothing: without a threshold that is a number detection
/// is off and the threshold 100. The legacy file has no devices. Never throws and logs nothing.
BroadcastDetectSetting BuildBroadcastDetectSetting(const UpdateContext& context);

}  // namespace KELP::Wifi::Updater
