#pragma once

#include <string>

#include "platform/records/feature_setting.h"

namespace testing_support {

/// A record whose members all differ from their defaults, no two numbers or texts alike.
inline KELP::Wifi::FeatureSetting SampleFeature() {
  KELP::Wifi::FeatureSetting setting;
  setting.enabled = true;
  setting.frequency = KELP::Wifi::Util::RadioFrequency::Band5GHz_1;
  setting.ssid = "Kelp";
  setting.display_ssid = true;
  setting.max_num_client = 256;
  setting.restrict_guest_access = true;
  setting.security = 7;
  setting.password = "secret";
  setting.auth_server_ip = "192.168.1.9";
  setting.auth_server_port = 1812;
  setting.schedule_enabled = true;
  setting.schedule_kind = 1;
  setting.schedule = "1010";
  setting.preset_number = 5;
  setting.preset_flag = true;
  setting.mac_filter_profile_id = -1;
  setting.guestPasswordRotation = {.enable = true,
                                   .date_type = 8,
                                   .strength = 2,
                                   .date = "2021-01-01 00:00",
                                   .week_day = "0,6",
                                   .notify_enable = true,
                                   .mail_list = {"a@example.com", "b@example.com"}};
  setting.pmf_mode = 9;
  setting.ampdu = true;
  setting.uapsd_enable = true;
  setting.ap_mumimo = true;
  setting.ap_enable_11r = true;
  setting.ap_mcast_translating = true;
  setting.country_abbrev_override_enable = true;
  setting.ap_isolation = true;
  setting.preset_on = true;
  setting.enable_ext_nss = true;
  setting.sc_disable_legacy_steering = true;
  setting.key_rotation = 3600;
  setting.dtim = 4;
  return setting;
}

/// Its members as they stand in an object of a document.
inline const std::string kSampleFeatureMembers = R"(
  "enabled": true,
  "frequency": 3,
  "ssid": "Kelp",
  "display_ssid": true,
  "max_num_client": 256,
  "restrict_guest_access": true,
  "security": 7,
  "password": "secret",
  "auth_server_ip": "192.168.1.9",
  "auth_server_port": 1812,
  "schedule_enabled": true,
  "schedule_kind": 1,
  "schedule": "1010",
  "preset_number": 5,
  "preset_flag": true,
  "mac_filter_profile_id": -1,
  "guestPasswordRotation": {
    "enable": true, "date_type": 8, "strength": 2, "date": "2021-01-01 00:00", "week_day": "0,6",
    "notify_enable": true, "mail_list": ["a@example.com", "b@example.com"]
  },
  "pmf_mode": 9,
  "ampdu": true,
  "uapsd_enable": true,
  "ap_mumimo": true,
  "ap_enable_11r": true,
  "ap_mcast_translating": true,
  "country_abbrev_override_enable": true,
  "ap_isolation": true,
  "preset_on": true,
  "enable_ext_nss": true,
  "sc_disable_legacy_steering": true,
  "key_rotation": 3600,
  "dtim": 4
)";

}  // namespace testing_support
