#pragma once

#include <random>
#include <string>

#include "platform/records/feature_setting.h"
#include "platform/records/global_data.h"
#include "platform/records/mac_filter.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"

namespace testing_support {

/// Records with every member set at random, each member by hand: a member that the records' own lists forgot
/// would otherwise be forgotten here too. Texts are random bytes, numbers often the ends of their range.
class RandomRecords {
 public:
  explicit RandomRecords(unsigned seed) : engine_(seed) {}

  bool Bool();
  std::int32_t Number();
  std::string Text();

  KELP::Wifi::MACFilterDevice MACFilterDevice();
  KELP::Wifi::MACFilterProfile MACFilterProfile();
  KELP::Wifi::BroadcastDetectSetting BroadcastDetectSetting();
  KELP::Wifi::Daemon::MiscSetting MiscSetting();
  KELP::Wifi::GuestPasswordRotation GuestPasswordRotation();
  KELP::Wifi::FeatureSetting FeatureSetting();
  KELP::Wifi::NetworkSetting NetworkSetting();
  KELP::Wifi::RadioSetting RadioSetting();
  KELP::Wifi::WPSSetting WPSSetting();
  KELP::Wifi::Daemon::GlobalData GlobalData();

 private:
  int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(engine_); }
  template <typename Make>
  auto Several(Make make);

  std::mt19937 engine_;
};

}  // namespace testing_support
