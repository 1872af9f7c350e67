#pragma once

#include "legacy/update_context.h"

namespace KELP::Wifi::Updater {

/// Turns the whole Wi-Fi configuration of generation 1.2.5 into the documents of generation 1.3 and archives
/// the files that it consumed. Does nothing but log when "global.json" or "misc.json" exists.
///
/// Throws on the first failure; what was written before stays. Because "global.json" comes first, no later
/// run repeats one that failed behind it.
void Migrate125To13(const UpdateContext& context);

/// All of it but "global.json": "misc.json", "radio.json", "wps.json", the network document of the device's
/// topology, and the archive. Throws on the first failure.
void MigrateLegacyWifiConfig(const UpdateContext& context);

}  // namespace KELP::Wifi::Updater
