#pragma once

#include <vector>

#include "legacy/update_context.h"
#include "platform/records/radio_setting.h"

namespace KELP::Wifi::Updater {

/// The device's radios, AllBands first.
std::vector<Util::RadioFrequency> GetRadioFrequencies(const UpdateContext& context);

/// One radio (not AllBands), from its legacy access-point file and the boot environment. Missing keys and
/// unknown words give their defaults, the latter with a log line. Throws what GetAccessPointFilePath throws.
RadioSetting BuildRadioSetting(const UpdateContext& context, Util::RadioFrequency frequency);

}  // namespace KELP::Wifi::Updater
