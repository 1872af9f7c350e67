#include "lab/household/settings_table.h"

#include "legacy/vocabularies.h"

namespace lab {
namespace {

namespace words = KELP::Wifi::Updater;

constexpr std::string_view kFlagUnknown = "flag-unknown";
constexpr std::string_view kNumberUnreadable = "number-unreadable";
constexpr std::string_view kNotStored = "setting-not-stored";
constexpr std::string_view kServerLost = "auth-server-lost";
constexpr std::string_view kRotationChanged = "rotation-changed";

using enum Form;
using enum Relevance;

constexpr SettingRow kNetworkRows[]{
    {"enabled", "enabled", Flag, "network-switched-off", "network-switched-off"},
    {"ssid", "ssid", Name, "ssid-lost", kNotStored},
    {"display_ssid", "display_ssid", Flag, "network-hidden", kNotStored},
    {"security", "security", Word, "security-unknown", kNotStored, Always, &words::kSecurityVocabulary},
    {"password", "password", Secret, "password-lost", kNotStored, NeedsSecret},
    {"pmf_mode", "pmf_mode", Word, "pmf-unknown", kNotStored, Always, &words::kPMFVocabulary},
    {"max_num_client", "max_num_client", Number, kNumberUnreadable},
    {"restrict_guest_access", "allow_access_guest", Refusal, "guests-let-in", kNotStored},
    {"auth_server_ip", "auth_server_ip", Text, kServerLost, kNotStored, Enterprise},
    {"auth_server_port", "auth_server_Port", Number, kServerLost, kNotStored, Enterprise},
    {"schedule_enabled", "schedule_enabled", Flag, kFlagUnknown},
    {"schedule_kind", nullptr, Fixed},
    {"schedule", "schedule", Text, "schedule-unreadable", {}, Scheduled},
    {"preset_number", nullptr, Fixed},
    {"preset_flag", nullptr, Fixed},
    {"mac_filter_profile_id", nullptr, Fixed},
    {"ampdu", "ampdu", Flag, kFlagUnknown},
    {"uapsd_enable", "uapsd_enable", Flag, kFlagUnknown},
    {"ap_mumimo", "ap_mumimo", Flag, kFlagUnknown},
    {"ap_enable_11r", "ap_enable_11r", Flag, kFlagUnknown},
    {"ap_mcast_translating", "ap_mcast_translating", Flag, kFlagUnknown},
    {"country_abbrev_override_enable", "country_abbrev_override_enable", Flag, kFlagUnknown},
    {"ap_isolation", "ap_isolation", Flag, "isolation-lost"},
    {"preset_on", nullptr, Fixed},
    {"enable_ext_nss", "enable_ext_nss", Flag, kFlagUnknown},
    {"sc_disable_legacy_steering", "sc_disable_legacy_steering", Flag, kFlagUnknown},
    {"key_rotation", "key_rotation", Number, kNumberUnreadable},
    {"dtim", "dtim", Number, kNumberUnreadable},
};

constexpr SettingRow kRotationRows[]{
    {"enable", "pwd_rotate_enable", Flag, "rotation-lost", kNotStored, RotationStored},
    {"date_type", "pwd_rotate_date_type", Word, kRotationChanged, kRotationChanged, Rotating,
     &words::kRotationDateTypeVocabulary},
    {"strength", "pwd_rotate_strength", Word, kRotationChanged, kRotationChanged, Rotating,
     &words::kRotationStrengthVocabulary},
    {"date", "pwd_rotate_date", Date, kRotationChanged, kRotationChanged, Rotating},
    {"", "pwd_rotate_hour", Hour, kRotationChanged, kRotationChanged, Rotating},
    {"", "pwd_rotate_minute", Minute, kRotationChanged, kRotationChanged, Rotating},
    {"week_day", "pwd_rotate_week_day", Days, "rotation-days-unreadable", kNotStored, Rotating},
    {"notify_enable", "pwd_rotate_notify_enable", Flag, kFlagUnknown},
    {"mail_list", "pwd_rotate_mail_list", Mails, "rotation-mail-odd", "rotation-mail-odd", Mailing},
};

constexpr SettingRow kRadioRows[]{
    {"channel", "channel", Channel, kNumberUnreadable},
    {"channel2", "channel2", Channel, kNumberUnreadable},
    {"bandwidth", "bandwidth", Word, "bandwidth-unknown", kNotStored, Always, &words::kBandwidthVocabulary},
    {"mode", "mode", Word, "mode-unknown", kNotStored, Always, &words::kMode5Vocabulary},
    {"txPower", "tx_power", Word, "power-unknown", kNotStored, Always, &words::kTxPowerVocabulary},
    {"allowDFSChannels", "allow_dfs_channels", Flag, kFlagUnknown},
    {"usb3Enabled", nullptr, Rule},
    {"thirdFlag", nullptr, Fixed},
    {"fourthFlag", nullptr, Fixed},
};

constexpr SettingRow kWholeNetworkRows[]{
    {"smartConnect", "smartconnect_enabled", Flag, kFlagUnknown},
    {"mac_filter_profile_id", "policy", Rule},
};

constexpr SettingRow kWPSRows[]{
    {"enabled", nullptr, Rule},
    {"band", nullptr, Fixed},
    {"pin_enabled", "is_wps_ap_pin_enabled", Flag, kFlagUnknown},
    {"pin", "wps_ap_pin", Text, "wps-pin-changed", "wps-pin-changed", WPSByPin},
};

constexpr SettingRow kGlobalRows[]{
    {"defaultModel", "kelpbios", Fixed},
    {"meshInfo.connectedModels", nullptr, Rule},
    {"meshInfo.isRepeater", "mesh_network_role", Rule},
    {"countryCodeSetting.countryCode", "country_code", Country, "country-unknown", kNotStored},
    {"backhaulSwapped", "mesh_swap_backhaul_band", Flag, kFlagUnknown, "backhaul-unreadable"},
};

constexpr SettingRow kMiscRows[]{
    {"netTopology", "net_topology", Topology, "topology-unreadable", kNotStored, NotARepeater},
    {"broadcastDetect.enabled", "broadcast_detect_enabled", Flag, "broadcast-detection-off"},
    {"broadcastDetect.threshold", "broadcast_threshold", Number, kNumberUnreadable, {}, DetectionOn},
};

}  // namespace

std::span<const SettingRow> NetworkRows() {
  return kNetworkRows;
}

std::span<const SettingRow> RotationRows() {
  return kRotationRows;
}

std::span<const SettingRow> RadioRows() {
  return kRadioRows;
}

std::span<const SettingRow> WholeNetworkRows() {
  return kWholeNetworkRows;
}

std::span<const SettingRow> WPSRows() {
  return kWPSRows;
}

std::span<const SettingRow> GlobalRows() {
  return kGlobalRows;
}

std::span<const SettingRow> MiscRows() {
  return kMiscRows;
}

}  // namespace lab
