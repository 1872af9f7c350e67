#pragma once

#include <cstdint>
#include <string>

#include "legacy/update_context.h"
#include "platform/records/feature_setting.h"

namespace KELP::Wifi::Updater {

/// One network on one radio, from the radio's legacy access-point file at `file`: the guest network's keys or
/// the primary's. `radio` and `mac_filter_profile_id` (-1 for none) are stored as they are. Missing keys and
/// unknown words give their defaults, the latter with a log line; what cannot be decoded is empty, with a log
/// line.
FeatureSetting BuildFeatureSetting(const UpdateContext& context, const std::string& file,
                                   Util::RadioFrequency radio, std::int32_t mac_filter_profile_id,
                                   bool is_guest);

}  // namespace KELP::Wifi::Updater
