#pragma once

#include <cstdint>

namespace KELP::Wifi::Util {

/// The device models, and the marker for none of them.
enum class SupportedModel : std::int32_t { Error = -1, ORCHID = 0, LOTUS = 1, MAPLE = 2, CEDAR = 3 };

}  // namespace KELP::Wifi::Util
