#include "builders/feature_setting.h"
#include <cstdint>
#include <string_view>

#include "legacy/encoded_text.h"
#include "legacy/legacy_value.h"
#include "legacy/network_value.h"
#include "legacy/update_context.h"
#include "legacy/vocabularies.h"
#include "platform/records/feature_setting.h"
#include "platform/records/guest_password_rotation.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi::Updater {
namespace {

GuestPasswordRotation DefaultRotation() {
  GuestPasswordRotation rotation;
  rotation.date_type = 1;
  rotation.strength = 1;
  rotation.date = "2021-01-01 00:00";
  rotation.week_day = "0,1,2,3,4,5,6";
  return rotation;
}

}  // namespace

// The order of the reads is the order of the log lines that they may cause.
FeatureSetting BuildFeatureSetting(const UpdateContext& /*context*/, const std::string& file,
                                   Util::RadioFrequency radio, std::int32_t mac_filter_profile_id,
                                   bool is_guest) {
  const NetworkSource source{file, is_guest};
  const auto text = [&](std::string_view key) { return ReadNetworkValue(source, key); };
  const auto flag = [&](std::string_view key) { return IsYes(text(key)); };
  const auto number = [&](std::string_view key, std::int32_t fallback) {
    return ParseLegacyInt(text(key), fallback);
  };

  FeatureSetting setting;
  setting.security = ToSecurityMode(text("security"));

  setting.enabled = flag("enabled");
  setting.frequency = radio;
  setting.ssid = DecodeBase64Text(text("ssid"));
  setting.display_ssid = flag("display_ssid");
  setting.max_num_client = number("max_num_client", 256);
  setting.restrict_guest_access = is_guest && text("allow_access_guest") == "no";
  setting.password = DecryptSsid(text(SecretKeyName(setting.security)));

  setting.auth_server_ip = text("auth_server_ip");
  setting.auth_server_port = number("auth_server_Port", 0);
  setting.schedule_enabled = flag("schedule_enabled");
  setting.schedule_kind = 1;
  setting.schedule = text("schedule");
  setting.preset_number = 0;
  setting.preset_flag = false;
  setting.mac_filter_profile_id = mac_filter_profile_id;
  setting.guestPasswordRotation = DefaultRotation();

  setting.pmf_mode = ToPMFMode(text("pmf_mode"));
  setting.ampdu = flag("ampdu");
  setting.uapsd_enable = flag("uapsd_enable");
  setting.ap_mumimo = flag("ap_mumimo");
  setting.ap_enable_11r = flag("ap_enable_11r");
  setting.ap_mcast_translating = flag("ap_mcast_translating");
  setting.country_abbrev_override_enable = flag("country_abbrev_override_enable");
  setting.ap_isolation = flag("ap_isolation");
  setting.preset_on = true;
  setting.enable_ext_nss = flag("enable_ext_nss");
  setting.sc_disable_legacy_steering = flag("sc_disable_legacy_steering");
  setting.key_rotation = number("key_rotation", 3600);
  setting.dtim = number("dtim", 4);
  return setting;
}

}  // namespace KELP::Wifi::Updater
