#pragma once

#include "legacy/update_context.h"

namespace KELP::Wifi::Updater {

/// Writes "/usr/kelp/etc/wifi/global.json" from the device's facts and the information store's "country_code"
/// and "mesh_swap_backhaul_band", which fall back to US and to not swapped, each with a log line. Throws what
/// JsonUtil::SaveJsonToFile throws.
void MigrateGlobalSettings(const UpdateContext& context);

}  // namespace KELP::Wifi::Updater
