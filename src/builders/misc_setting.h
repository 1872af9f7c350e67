#pragma once

#include <string>

#include "legacy/update_context.h"
#include "platform/records/misc_setting.h"

namespace KELP::Wifi::Updater {

/// The topology word as it is, the broadcast detection and the MAC filter profiles from their legacy files.
Daemon::MiscSetting BuildMiscSetting(const UpdateContext& context, const std::string& net_topology);

}  // namespace KELP::Wifi::Updater
