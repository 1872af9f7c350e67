#pragma once

#include <set>

#include "platform/records/country_code.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Util {

enum class LogLevel { Silent = 1, Usual, Chatty };

}  // namespace KELP::Wifi::Util

namespace KELP::Wifi {

struct CountryCodeSetting {
  CountryCodeSetting() : countryCode(CountryCode::AD) {}

  CountryCode countryCode;
};

struct MeshInfo {
  MeshInfo() : isRepeater(false) {}

  std::set<Util::SupportedModel> connectedModels;
  bool isRepeater;
};

}  // namespace KELP::Wifi

namespace KELP::Wifi::Util {
class JsonSerializer;
}

namespace KELP::Wifi::Daemon {

class GlobalData {
 public:
  void SetLogLevel(Util::LogLevel level) { level_ = level; }
  void SetDefaultModel(Util::SupportedModel model) { model_ = model; }
  void SetMeshInfo(const MeshInfo& mesh) { mesh_ = mesh; }
  void SetCountryCodeSetting(const CountryCodeSetting& country) { country_ = country; }
  void SetBackhaulSwapped(bool swapped) { swapped_ = swapped; }

 private:
  friend class Util::JsonSerializer;

  Util::LogLevel level_{};
  Util::SupportedModel model_{};
  MeshInfo mesh_;
  CountryCodeSetting country_;
  bool swapped_ = false;
};

}  // namespace KELP::Wifi::Daemon
