#pragma once

#include "platform/records/radio_frequency.h"

namespace KELP::Wifi {

struct RadioSetting {
  int channel = 0;
  int channel2 = 0;
  int bandwidth = 0;
  int mode = 0;
  int txPower = 0;
  bool allowDFSChannels = false;
  bool usb3Enabled = false;
  bool thirdFlag = true;
  bool fourthFlag = false;
  Util::RadioFrequency frequency{};
};

}  // namespace KELP::Wifi
