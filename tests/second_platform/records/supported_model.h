#pragma once

namespace KELP::Wifi::Util {

enum class SupportedModel : int { Error = -1, ORCHID, LOTUS, MAPLE, CEDAR };

}  // namespace KELP::Wifi::Util
