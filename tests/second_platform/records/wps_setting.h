#pragma once

#include <string>

#include "platform/records/radio_frequency.h"

namespace KELP::Wifi {

struct WPSSetting {
  std::string pin;
  Util::RadioFrequency band{};
  int reserved = 0;
  bool pin_enabled = false;
  bool enabled = false;
};

}  // namespace KELP::Wifi
