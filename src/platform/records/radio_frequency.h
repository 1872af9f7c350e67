#pragma once

#include <cstdint>

namespace KELP::Wifi::Util {

/// A radio of the device, or all of them together.
enum class RadioFrequency : std::int32_t {
  AllBands = 0,  // no radio of its own: what is common to all of them
  Band2_4GHz = 1,
  Band5GHz = 2,    // the single 5 GHz radio of a dual-band device
  Band5GHz_1 = 3,  // the first 5 GHz radio of a tri-band device
  Band5GHz_2 = 4,  // the second 5 GHz radio of a tri-band device
};

}  // namespace KELP::Wifi::Util
