#include "tests/platform/random_records.h"

#include <array>
#include <cstdio>
#include <limits>
#include <vector>

namespace testing_support {

using namespace KELP::Wifi;

bool RandomRecords::Bool() {
  return Below(2) == 1;
}

std::int32_t RandomRecords::Number() {
  using Limits = std::numeric_limits<std::int32_t>;
  constexpr std::array kEnds{Limits::min(), Limits::max(), -1, 0, 1};
  if (Bool()) return kEnds[static_cast<std::size_t>(Below(kEnds.size()))];
  return std::uniform_int_distribution<std::int32_t>(Limits::min(), Limits::max())(engine_);
}

std::string RandomRecords::Text() {
  std::string text(static_cast<std::size_t>(Below(40)), '\0');
  for (char& byte : text) byte = static_cast<char>(Below(256));
  return text;
}

template <typename Make>
auto RandomRecords::Several(Make make) {
  std::vector<decltype(make())> elements;
  for (int i = Below(4); i > 0; --i) elements.push_back(make());
  return elements;
}

MACFilterDevice RandomRecords::MACFilterDevice() {
  KELP::Wifi::MACFilterDevice device;
  device.name = Text();
  std::array<char, 18> mac{};
  std::snprintf(mac.data(), mac.size(), "%02x:%02x:%02x:%02x:%02x:%02x", Below(256), Below(256), Below(256),
                Below(256), Below(256), Below(256));
  device.mac = Util::MACAddress(mac.data());
  return device;
}

MACFilterProfile RandomRecords::MACFilterProfile() {
  KELP::Wifi::MACFilterProfile profile;
  profile.id = Number();
  profile.name = Text();
  profile.policy = Bool() ? MACFilterPolicy::Deny : MACFilterPolicy::Allow;
  profile.devices = Several([&] { return MACFilterDevice(); });
  return profile;
}

BroadcastDetectSetting RandomRecords::BroadcastDetectSetting() {
  KELP::Wifi::BroadcastDetectSetting setting;
  setting.devices = Several([&] { return MACFilterDevice(); });
  setting.enabled = Bool();
  setting.threshold = Number();
  return setting;
}

Daemon::MiscSetting RandomRecords::MiscSetting() {
  Daemon::MiscSetting setting;
  setting.netTopology = Text();
  setting.broadcastDetect = BroadcastDetectSetting();
  setting.macFilterProfiles = Several([&] { return MACFilterProfile(); });
  return setting;
}

GuestPasswordRotation RandomRecords::GuestPasswordRotation() {
  KELP::Wifi::GuestPasswordRotation rotation;
  rotation.enable = Bool();
  rotation.date_type = Number();
  rotation.strength = Number();
  rotation.date = Text();
  rotation.week_day = Text();
  rotation.notify_enable = Bool();
  rotation.mail_list = Several([&] { return Text(); });
  return rotation;
}

FeatureSetting RandomRecords::FeatureSetting() {
  KELP::Wifi::FeatureSetting setting;
  setting.enabled = Bool();
  setting.frequency = static_cast<Util::RadioFrequency>(Number());
  setting.ssid = Text();
  setting.display_ssid = Bool();
  setting.max_num_client = Number();
  setting.restrict_guest_access = Bool();
  setting.security = Number();
  setting.password = Text();
  setting.auth_server_ip = Text();
  setting.auth_server_port = Number();
  setting.schedule_enabled = Bool();
  setting.schedule_kind = Number();
  setting.schedule = Text();
  setting.preset_number = Number();
  setting.preset_flag = Bool();
  setting.mac_filter_profile_id = Number();
  setting.guestPasswordRotation = GuestPasswordRotation();
  setting.pmf_mode = Number();
  setting.ampdu = Bool();
  setting.uapsd_enable = Bool();
  setting.ap_mumimo = Bool();
  setting.ap_enable_11r = Bool();
  setting.ap_mcast_translating = Bool();
  setting.country_abbrev_override_enable = Bool();
  setting.ap_isolation = Bool();
  setting.preset_on = Bool();
  setting.enable_ext_nss = Bool();
  setting.sc_disable_legacy_steering = Bool();
  setting.key_rotation = Number();
  setting.dtim = Number();
  return setting;
}

NetworkSetting RandomRecords::NetworkSetting() {
  KELP::Wifi::NetworkSetting setting;
  setting.number = Number();
  setting.name = Text();
  setting.kind = Bool() ? NetworkKind::Guest : NetworkKind::Primary;
  setting.smartConnect = Bool();
  setting.allBands = FeatureSetting();
  setting.featureSettings = Several([&] { return FeatureSetting(); });
  return setting;
}

RadioSetting RandomRecords::RadioSetting() {
  KELP::Wifi::RadioSetting setting;
  setting.frequency = static_cast<Util::RadioFrequency>(Number());
  setting.channel = Number();
  setting.channel2 = Number();
  setting.bandwidth = Number();
  setting.mode = Number();
  setting.txPower = Number();
  setting.allowDFSChannels = Bool();
  setting.usb3Enabled = Bool();
  setting.thirdFlag = Bool();
  setting.fourthFlag = Bool();
  return setting;
}

WPSSetting RandomRecords::WPSSetting() {
  KELP::Wifi::WPSSetting setting;
  setting.enabled = Bool();
  setting.reserved = Number();
  setting.band = static_cast<Util::RadioFrequency>(Number());
  setting.pin_enabled = Bool();
  setting.pin = Text();
  return setting;
}

Daemon::GlobalData RandomRecords::GlobalData() {
  const auto model = [&] { return static_cast<Util::SupportedModel>(Below(5) - 1); };
  MeshInfo mesh;
  for (int i = Below(6); i > 0; --i) mesh.connectedModels.insert(model());
  mesh.isRepeater = Bool();

  Daemon::GlobalData data;
  data.SetLogLevel(static_cast<Util::LogLevel>(Number()));
  data.SetDefaultModel(model());
  data.SetMeshInfo(mesh);
  data.SetCountryCodeSetting({static_cast<CountryCode>(Below(198))});
  data.SetBackhaulSwapped(Bool());
  return data;
}

}  // namespace testing_support
