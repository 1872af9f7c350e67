#pragma once

#include "platform/records/radio_frequency.h"

namespace KELP::Wifi::Updater {

/// The radios by their numbers: what the platform's header calls them is its own affair.
inline constexpr auto kAllBands = static_cast<Util::RadioFrequency>(0);  // no radio of its own
inline constexpr auto kBand24 = static_cast<Util::RadioFrequency>(1);
inline constexpr auto kBand5 = static_cast<Util::RadioFrequency>(2);        // of a dual-band device
inline constexpr auto kBand5First = static_cast<Util::RadioFrequency>(3);   // of a tri-band device
inline constexpr auto kBand5Second = static_cast<Util::RadioFrequency>(4);  // of a tri-band device

}  // namespace KELP::Wifi::Updater
