#pragma once

#include <string>

#include "platform/records/guest_password_rotation.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi {

struct FeatureSetting {
  GuestPasswordRotation guestPasswordRotation;
  std::string ssid, password, auth_server_ip, schedule;
  Util::RadioFrequency frequency{};
  int max_num_client = 0, security = 0, auth_server_port = 0, schedule_kind = 0, preset_number = 0;
  int mac_filter_profile_id = 0, pmf_mode = 0, key_rotation = 0, dtim = 0;
  bool enabled = false, display_ssid = false, restrict_guest_access = false, schedule_enabled = false;
  bool preset_flag = false, ampdu = false, uapsd_enable = false, ap_mumimo = false, ap_enable_11r = false;
  bool ap_mcast_translating = false, country_abbrev_override_enable = false, ap_isolation = false;
  bool preset_on = false, enable_ext_nss = false, sc_disable_legacy_steering = false;
};

}  // namespace KELP::Wifi
