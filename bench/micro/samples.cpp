#include "bench/micro/samples.h"

#include <array>
#include <cstdio>

namespace bench {
namespace {

using KELP::Wifi::FeatureSetting;
using KELP::Wifi::Util::RadioFrequency;

std::string Address(std::size_t station) {
  std::array<char, 18> text{};
  const auto number = static_cast<unsigned>(station);
  std::snprintf(text.data(), text.size(), "02:00:00:%02x:%02x:%02x", number >> 16U & 0xFFU,
                number >> 8U & 0xFFU, number & 0xFFU);
  return text.data();
}

FeatureSetting Feature(RadioFrequency radio) {
  FeatureSetting setting;
  setting.enabled = true;
  setting.frequency = radio;
  setting.ssid = "Lighthouse";
  setting.password = "seven tides a day";
  setting.guestPasswordRotation.date = "2021-01-01 00:00";
  setting.guestPasswordRotation.week_day = "0,1,2,3,4,5,6";
  setting.guestPasswordRotation.mail_list = {"one@example.net", "two@example.net"};
  return setting;
}

}  // namespace

std::string KeyValueFile(std::size_t keys) {
  std::string text = "# all bands\n";
  for (std::size_t key = 0; key < keys; ++key) {
    const std::string number = std::to_string(key);
    text.append("key_").append(number).append("=value ").append(number).append("\n");
  }
  return text;
}

std::string FilterList(std::size_t stations) {
  std::string text;
  for (std::size_t station = 0; station < stations; ++station) {
    const std::string number = std::to_string(station);
    text.append("[station_").append(number).append("]\nenable=yes\ndesc=Station ").append(number);
    text.append("\nmac=").append(Address(station)).append("\n\n");
  }
  return text;
}

KELP::Wifi::NetworkSetting Network() {
  KELP::Wifi::NetworkSetting network;
  network.name = "Primary Network";
  network.allBands = Feature(RadioFrequency::AllBands);
  for (const RadioFrequency radio :
       {RadioFrequency::Band2_4GHz, RadioFrequency::Band5GHz_1, RadioFrequency::Band5GHz_2}) {
    network.featureSettings.push_back(Feature(radio));
  }
  return network;
}

KELP::Wifi::Daemon::MiscSetting Filters(std::size_t stations) {
  KELP::Wifi::MACFilterProfile profile{0, "Primary Network - Deny", KELP::Wifi::MACFilterPolicy::Deny, {}};
  for (std::size_t station = 0; station < stations; ++station) {
    profile.devices.push_back(
        {"Station " + std::to_string(station), KELP::Wifi::Util::MACAddress(Address(station))});
  }
  KELP::Wifi::Daemon::MiscSetting misc;
  misc.netTopology = "default";
  misc.macFilterProfiles.push_back(std::move(profile));
  return misc;
}

}  // namespace bench
