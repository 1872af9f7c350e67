// One line of text a record. Not all members are in it: what the tests look at.
#include <sstream>

#include "platform/json_serializer.h"
#include "platform/records/global_data.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"

namespace KELP::Wifi::Util {
namespace {

std::string ToText(const FeatureSetting& setting) {
  std::ostringstream text;
  text << '[' << setting.frequency << ' ' << setting.ssid << " security " << setting.security << " with "
       << setting.password << ", filter " << setting.mac_filter_profile_id << ", rotation "
       << setting.guestPasswordRotation.enable << ' ' << setting.guestPasswordRotation.date << ']';
  return text.str();
}

}  // namespace

template <>
Json::Value JsonSerializer::Serialize(const Daemon::GlobalData& record) {
  std::ostringstream text;
  text << "log " << static_cast<int>(record.level_) << ", model " << static_cast<int>(record.model_)
       << ", mesh";
  for (const SupportedModel model : record.mesh_.connectedModels) text << ' ' << static_cast<int>(model);
  text << ", repeater " << record.mesh_.isRepeater << ", country "
       << static_cast<int>(record.country_.countryCode) << ", swapped " << record.swapped_;
  return text.str();
}

template <>
Json::Value JsonSerializer::Serialize(const Daemon::MiscSetting& record) {
  std::ostringstream text;
  text << record.netTopology << ", detect " << record.broadcastDetect.enabled << " at "
       << record.broadcastDetect.threshold;
  for (const MACFilterProfile& profile : record.macFilterProfiles) {
    text << ", " << profile.id << ' ' << profile.name << " policy " << profile.policy << " of "
         << profile.devices.size() << " from " << profile.devices.front().mac.Digits() << " to "
         << profile.devices.back().mac.Digits() << ' ' << profile.devices.back().name;
  }
  return text.str();
}

template <>
Json::Value JsonSerializer::Serialize(const NetworkSetting& record) {
  std::ostringstream text;
  text << record.number << ' ' << record.name << " kind " << static_cast<int>(record.kind) << " smart "
       << record.smartConnect << ' ' << ToText(record.allBands);
  for (const FeatureSetting& setting : record.featureSettings) text << ToText(setting);
  return text.str();
}

template <>
Json::Value JsonSerializer::Serialize(const RadioSetting& record) {
  std::ostringstream text;
  text << "radio " << record.frequency << " channels " << record.channel << ' ' << record.channel2
       << " bandwidth " << record.bandwidth << " mode " << record.mode << " power " << record.txPower
       << " dfs " << record.allowDFSChannels << " usb3 " << record.usb3Enabled << " flags "
       << record.thirdFlag << record.fourthFlag;
  return text.str();
}

template <>
Json::Value JsonSerializer::Serialize(const WPSSetting& record) {
  std::ostringstream text;
  text << "on " << record.enabled << " band " << record.band << " reserved " << record.reserved << " pin "
       << record.pin_enabled << ' ' << record.pin;
  return text.str();
}

}  // namespace KELP::Wifi::Util
