#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <string>

#include "platform/records/radio_frequency.h"

namespace KELP::Wifi {

struct WPSSetting {
  bool enabled = false;
  std::int32_t reserved = 0;
  Util::RadioFrequency band{};
  bool pin_enabled = false;
  std::string pin;

  bool operator==(const WPSSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(WPSSetting, (), (enabled, reserved, band, pin_enabled, pin))

}  // namespace KELP::Wifi
