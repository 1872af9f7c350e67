#pragma once

namespace KELP::Wifi::Util {

enum RadioFrequency : int { kEveryRadio, kSlowRadio, kOnlyFastRadio, kLowerFastRadio, kUpperFastRadio };

}  // namespace KELP::Wifi::Util
