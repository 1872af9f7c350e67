#pragma once

#include "platform/records/country_code.h"
#include "platform/records/global_data.h"

namespace KELP::Wifi::Updater {

/// What the global document gets from either generation.
inline constexpr auto kMigratedLogLevel = static_cast<Util::LogLevel>(2);

inline CountryCodeSetting SettingOf(CountryCode country) {
  CountryCodeSetting setting;
  setting.countryCode = country;
  return setting;
}

}  // namespace KELP::Wifi::Updater
