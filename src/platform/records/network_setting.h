#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/records/feature_setting.h"

namespace KELP::Wifi {

enum class NetworkKind : std::int32_t { Primary = 0, Guest = 1 };

/// One network of the household on all of its radios.
struct NetworkSetting {
  std::int32_t number = 0;
  std::string name;
  NetworkKind kind{};
  bool smartConnect = false;
  FeatureSetting allBands;                      // what holds for all radios
  std::vector<FeatureSetting> featureSettings;  // each radio's own

  bool operator==(const NetworkSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(NetworkSetting, (), (number, name, kind, smartConnect, allBands, featureSettings))

}  // namespace KELP::Wifi
