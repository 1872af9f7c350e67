#pragma once

#include <string>
#include <vector>

#include "platform/records/feature_setting.h"

namespace KELP::Wifi {

struct NetworkSetting {
  std::vector<FeatureSetting> featureSettings;
  FeatureSetting allBands;
  std::string name;
  enum class Audience : short { Family, Visitors } kind{};
  int number = 0;
  bool smartConnect = false;
};

}  // namespace KELP::Wifi
