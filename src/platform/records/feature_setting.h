#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <string>

#include "platform/records/guest_password_rotation.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi {

/// One network on one radio. Texts are bytes: an SSID may be in any encoding.
struct FeatureSetting {
  bool enabled = false;
  Util::RadioFrequency frequency{};
  std::string ssid;
  bool display_ssid = false;
  std::int32_t max_num_client = 0;
  bool restrict_guest_access = false;
  std::int32_t security = 0;
  std::string password;  // or, with enterprise security, the authentication server's shared secret
  std::string auth_server_ip;
  std::int32_t auth_server_port = 0;
  bool schedule_enabled = false;
  std::int32_t schedule_kind = 0;
  std::string schedule;
  std::int32_t preset_number = 0;
  bool preset_flag = false;
  std::int32_t mac_filter_profile_id = 0;  // -1 for none
  GuestPasswordRotation guestPasswordRotation;
  std::int32_t pmf_mode = 0;
  bool ampdu = false;
  bool uapsd_enable = false;
  bool ap_mumimo = false;
  bool ap_enable_11r = false;
  bool ap_mcast_translating = false;
  bool country_abbrev_override_enable = false;
  bool ap_isolation = false;
  bool preset_on = false;
  bool enable_ext_nss = false;
  bool sc_disable_legacy_steering = false;
  std::int32_t key_rotation = 0;  // seconds
  std::int32_t dtim = 0;          // beacons

  bool operator==(const FeatureSetting&) const = default;
};
BOOST_DESCRIBE_STRUCT(FeatureSetting, (),
                      (enabled, frequency, ssid, display_ssid, max_num_client, restrict_guest_access,
                       security, password, auth_server_ip, auth_server_port, schedule_enabled, schedule_kind,
                       schedule, preset_number, preset_flag, mac_filter_profile_id, guestPasswordRotation,
                       pmf_mode, ampdu, uapsd_enable, ap_mumimo, ap_enable_11r, ap_mcast_translating,
                       country_abbrev_override_enable, ap_isolation, preset_on, enable_ext_nss,
                       sc_disable_legacy_steering, key_rotation, dtim))

}  // namespace KELP::Wifi
