#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>

#include "platform/records/radio_frequency.h"

namespace KELP::Wifi {

/// One radio.
struct RadioSetting {
  Util::RadioFrequency frequency{};
  std::int32_t channel = 0;   // 0 for automatic
  std::int32_t channel2 = 0;  // 0 for automatic
  std::int32_t bandwidth = 0;
  std::int32_t mode = 0;
  std::int32_t txPower = 0;
  bool allowDFSChannels = false;
  bool usb3Enabled = false;
  bool thirdFlag = false;
  bool fourthFlag = false;

  bool operator==(const RadioSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(RadioSetting, (),
                      (frequency, channel, channel2, bandwidth, mode, txPower, allowDFSChannels, usb3Enabled,
                       thirdFlag, fourthFlag))

}  // namespace KELP::Wifi
