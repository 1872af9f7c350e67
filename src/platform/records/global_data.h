#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <set>

#include "platform/records/country_code.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Util {

/// The daemon's log level; the value 2 is what migrations set.
enum class LogLevel : std::int32_t {};

}  // namespace KELP::Wifi::Util

namespace KELP::Wifi {

struct CountryCodeSetting {
  CountryCode countryCode{};

  bool operator==(const CountryCodeSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(CountryCodeSetting, (), (countryCode))

struct MeshInfo {
  std::set<Util::SupportedModel> connectedModels;  // the models of the mesh nodes that this device works with
  bool isRepeater = false;

  bool operator==(const MeshInfo&) const = default;
};
BOOST_DESCRIBE_STRUCT(MeshInfo, (), (connectedModels, isRepeater))

}  // namespace KELP::Wifi

namespace KELP::Wifi::Daemon {

/// The daemon's device-wide settings, the content of global.json. Written through its setters only.
class GlobalData {
 public:
  void SetLogLevel(Util::LogLevel level) { logLevel = level; }
  void SetDefaultModel(Util::SupportedModel model) { defaultModel = model; }
  void SetMeshInfo(const MeshInfo& info) { meshInfo = info; }
  void SetCountryCodeSetting(const CountryCodeSetting& setting) { countryCodeSetting = setting; }
  void SetBackhaulSwapped(bool swapped) { backhaulSwapped = swapped; }

  bool operator==(const GlobalData&) const = default;

 private:
  Util::LogLevel logLevel{};
  Util::SupportedModel defaultModel{};
  MeshInfo meshInfo;
  CountryCodeSetting countryCodeSetting;
  bool backhaulSwapped = false;

  BOOST_DESCRIBE_CLASS(GlobalData, (), (), (),
                       (logLevel, defaultModel, meshInfo, countryCodeSetting, backhaulSwapped))
};

}  // namespace KELP::Wifi::Daemon
