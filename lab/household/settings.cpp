#include "lab/household/settings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lab/household/legacy_words.h"
#include "lab/household/mesh_role.h"
#include "lab/household/rotation_date.h"
#include "lab/household/schemas.h"
#include "lab/household/stored_name.h"

namespace lab {
namespace {

/// How a setting's word and its value are compared, to see whether the word counted.
enum class Form { Flag, NegatedFlag, Number, Word, Text, Ssid, Secret, Pin, Date, List, Fixed };

/// A member of a document and the legacy key that it is named for.
struct Member {
  const char* name;
  const char* key;  // null where there is none
  Form form;
  int message = 0;  // logged where a word is not known
};

constexpr std::array kNetworkMembers{
    Member{"enabled", "enabled", Form::Flag},
    Member{"ssid", "ssid", Form::Ssid},
    Member{"display_ssid", "display_ssid", Form::Flag},
    Member{"security", "security", Form::Word, 760},
    Member{"password", "password", Form::Secret},
    Member{"pmf_mode", "pmf_mode", Form::Word, 776},
    Member{"max_num_client", "max_num_client", Form::Number},
    Member{"restrict_guest_access", "allow_access_guest", Form::NegatedFlag},
    Member{"auth_server_ip", "auth_server_ip", Form::Text},
    Member{"auth_server_port", "auth_server_Port", Form::Number},
    Member{"schedule_enabled", "schedule_enabled", Form::Flag},
    Member{"schedule_kind", nullptr, Form::Fixed},
    Member{"schedule", "schedule", Form::Text},
    Member{"preset_number", nullptr, Form::Fixed},
    Member{"preset_flag", nullptr, Form::Fixed},
    Member{"mac_filter_profile_id", nullptr, Form::Fixed},
    Member{"ampdu", "ampdu", Form::Flag},
    Member{"uapsd_enable", "uapsd_enable", Form::Flag},
    Member{"ap_mumimo", "ap_mumimo", Form::Flag},
    Member{"ap_enable_11r", "ap_enable_11r", Form::Flag},
    Member{"ap_mcast_translating", "ap_mcast_translating", Form::Flag},
    Member{"country_abbrev_override_enable", "country_abbrev_override_enable", Form::Flag},
    Member{"ap_isolation", "ap_isolation", Form::Flag},
    Member{"preset_on", nullptr, Form::Fixed},
    Member{"enable_ext_nss", "enable_ext_nss", Form::Flag},
    Member{"sc_disable_legacy_steering", "sc_disable_legacy_steering", Form::Flag},
    Member{"key_rotation", "key_rotation", Form::Number},
    Member{"dtim", "dtim", Form::Number},
};

constexpr std::array kRotationMembers{
    Member{"enable", "pwd_rotate_enable", Form::Flag},
    Member{"date_type", "pwd_rotate_date_type", Form::Word, 855},
    Member{"strength", "pwd_rotate_strength", Form::Word, 869},
    Member{"date", "pwd_rotate_date", Form::Date},
    Member{"week_day", "pwd_rotate_week_day", Form::Text},
    Member{"notify_enable", "pwd_rotate_notify_enable", Form::Flag},
    Member{"mail_list", "pwd_rotate_mail_list", Form::List},
};

constexpr std::array kRadioMembers{
    Member{"channel", "channel", Form::Number},
    Member{"channel2", "channel2", Form::Number},
    Member{"bandwidth", "bandwidth", Form::Word, 838},
    Member{"mode", "mode", Form::Word, 795},
    Member{"txPower", "tx_power", Form::Word, 811},
    Member{"allowDFSChannels", "allow_dfs_channels", Form::Flag},
    Member{"usb3Enabled", nullptr, Form::Word, 896},
    Member{"thirdFlag", nullptr, Form::Fixed},
    Member{"fourthFlag", nullptr, Form::Fixed},
};

constexpr int kOpen = 0;
constexpr int kOWE = 1;
constexpr int kFirstEnterprise = 8;
constexpr int kLastEnterprise = 11;
constexpr int kCannotOpenSecret = 589;
constexpr int kBand2_4GHz = 1;
constexpr int kUnknownPower = 811;

/// "auto" is how the legacy files write the channel 0.
bool IsAutomaticChannel(const Member& member, const std::string& word, const Json::Value& now) {
  return std::string_view(member.key).starts_with("channel") && NormalizeValue(word) == "auto" && now == 0;
}

/// Whether a secret that was stored, or that the network's security needs, could not be opened.
bool IsSecretLost(const RunView& view, const std::string& word, const Json::Value& object) {
  const int security = NumberIn(object, "security", kOpen);
  const bool is_told = view.Logged(kCannotOpenSecret, word);
  return is_told && (!word.empty() || (security != kOpen && security != kOWE));
}

bool FellBack(const RunView& view, const Member& member, const Setting& setting, const Json::Value& object) {
  const std::string word = setting.was.value_or("");
  switch (member.form) {
    case Form::Flag:
      return MaybeMeantYes(setting.was);
    case Form::NegatedFlag:
      return MaybeMeantNo(setting.was);
    case Form::Number:
      return setting.now.isInt() && !IsExactNumber(word, setting.now.asInt()) &&
             !IsAutomaticChannel(member, word, setting.now);
    case Form::Word:
      return member.key == nullptr ? view.Logged(member.message) : view.Logged(member.message, word);
    case Form::Ssid:
      return !word.empty() && setting.now.isString() &&
             (setting.now.asString().empty() || IsNameCut(word, setting.now.asString()));
    case Form::Secret:
      return IsSecretLost(view, word, object);
    case Form::Pin:
      return !setting.was;
    case Form::Date:
      return setting.now.isString() && IsOtherDate(word, setting.now.asString());
    case Form::Text:
    case Form::List:
    case Form::Fixed:
      break;
  }
  return false;
}

/// A setting of which `key` (formed for the network) stands in `file`.
Setting Describe(const RunView& view, const Member& member, const std::string& file, const std::string& key,
                 const Json::Value& object, const Json::Value& words) {
  Setting setting;
  setting.member = member.name;
  setting.title = Title(words[member.name]);
  if (object.isObject()) setting.now = object[member.name];
  setting.meaning = Meaning(words[member.name], setting.now);
  if (!key.empty()) {
    setting.file = file;
    setting.key = key;
    setting.was = view.Was(file, key);
  }
  setting.fell_back = view.IsWholeMigration() && FellBack(view, member, setting, object);
  return setting;
}

std::string KeyOf(const Member& member, const NetworkView& network, const Json::Value& now) {
  if (member.key == nullptr) return "";
  if (member.form == Form::NegatedFlag && !network.is_guest) return "";
  const int security = NumberIn(now, "security", 0);
  const bool is_enterprise = security >= kFirstEnterprise && security <= kLastEnterprise;
  if (member.form == Form::Secret && is_enterprise) return network.Key("auth_server_shared_secret");
  return network.Key(member.key);
}

/// Whether a radio's own word says something else than counts now. A power that is not known says nothing.
bool IsDecidedElsewhere(const Setting& setting) {
  const std::string own = setting.was.value_or("");
  if (setting.now.isBool()) return (own == "yes") != setting.now.asBool();
  return (own == "low" || own == "medium" || own == "high") && own != setting.meaning;
}

/// The schedule's date has its time with it, which stands under keys of its own.
void AddTime(const RunView& view, const NetworkView& network, Setting& date) {
  const auto hour = view.Was(date.file, network.Key("pwd_rotate_hour"));
  const auto minute = view.Was(date.file, network.Key("pwd_rotate_minute"));
  const auto time = TimeIn(date.now.isString() ? date.now.asString() : "");
  const bool is_other_time = time && (!IsExactNumber(hour.value_or(""), time->hour) ||
                                      !IsExactNumber(minute.value_or(""), time->minute));
  date.fell_back = date.fell_back || (view.IsWholeMigration() && is_other_time);
  if (!date.was && !hour && !minute) return;
  date.was = date.was.value_or("") + " " + hour.value_or("") + ":" + minute.value_or("");
}

/// With smart connect a radio's power and DFS are those of the all-bands file.
void LetAllBandsDecide(const RunView& view, Setting& setting) {
  const bool is_flag = setting.key == "allow_dfs_channels";
  if (!is_flag && setting.key != "tx_power") return;
  const std::string deciding = view.Was(kAllBandsFile, setting.key).value_or("");
  setting.decided_elsewhere = IsDecidedElsewhere(setting);
  setting.fell_back = is_flag ? MaybeMeantYes(deciding) : view.Logged(kUnknownPower, deciding);
}

bool IsWPSWordLost(const RunView& view) {
  const std::vector<std::string> files = WPSFiles(view);
  return std::ranges::any_of(
      files, [&](const std::string& file) { return MaybeMeantYes(view.Was(file, "ap_enable_wps")); });
}

Setting Fact(const RunView& view, const char* member, const char* key, const Json::Value& object,
             const Json::Value& words, int message) {
  const Member fact{member, key, Form::Word, message};
  // Only a whole migration takes these from the information store.
  const bool has_key = key != nullptr && view.IsWholeMigration();
  Setting setting = Describe(view, fact, kInformationStore, has_key ? key : "", object, words);
  setting.fell_back = message != 0 && view.IsWholeMigration() && view.Logged(message);
  return setting;
}

}  // namespace

bool IsSmartConnectOn(const RunView& view) {
  const auto& networks = view.Networks();
  return std::ranges::any_of(networks, [](const NetworkView& network) {
    return !network.is_guest && FlagIn(*network.now, "smartConnect");
  });
}

std::vector<Setting> SettingsOf(const RunView& view, const NetworkView& network, const RadioView& radio) {
  const Json::Value& words = Properties("network", "feature");
  std::vector<Setting> settings;
  for (const Member& member : kNetworkMembers) {
    settings.push_back(
        Describe(view, member, radio.file, KeyOf(member, network, *radio.now), *radio.now, words));
  }
  const Json::Value nothing;
  const Json::Value& rotation = radio.now->isObject() ? (*radio.now)["guestPasswordRotation"] : nothing;
  const Json::Value& rotation_words = Properties("network", "rotation");
  for (const Member& member : kRotationMembers) {
    const std::string key = network.is_guest ? network.Key(member.key) : "";
    Setting setting = Describe(view, member, radio.file, key, rotation, rotation_words);
    if (network.is_guest && member.form == Form::Date) AddTime(view, network, setting);
    if (!network.is_guest) setting.fell_back = false;
    setting.member = "guestPasswordRotation." + setting.member;
    settings.push_back(std::move(setting));
  }
  return settings;
}

std::vector<Setting> SettingsOf(const RunView& view, const RadioView& radio) {
  const Json::Value& words = Properties("radio", "radio");
  const bool smart_connect = IsSmartConnectOn(view);
  std::vector<Setting> settings;
  for (const Member& member : kRadioMembers) {
    const bool is_forced = radio.frequency == kBand2_4GHz && std::string_view(member.name) == "bandwidth" &&
                           view.Was(radio.file, "force_24g_40mhz") == "yes";
    const char* const key = is_forced ? "force_24g_40mhz" : member.key;
    Setting setting = Describe(view, member, radio.file, key == nullptr ? "" : key, *radio.now, words);
    if (is_forced) setting.fell_back = false;
    if (smart_connect) LetAllBandsDecide(view, setting);
    settings.push_back(std::move(setting));
  }
  return settings;
}

std::vector<Setting> SettingsOf(const RunView& view, const NetworkView& network) {
  const Json::Value& words = Properties("network", "network");
  const std::string all_bands = network.radios.front().file;
  const std::string filter = kFilterFolder + std::string(network.is_guest ? "mf_guest.info" : "mf.info");
  std::vector<Setting> settings;
  settings.push_back(Describe(view, {"smartConnect", "smartconnect_enabled", Form::Flag}, all_bands,
                              network.is_guest ? "smartconnect_guest_enabled" : "smartconnect_enabled",
                              *network.now, words));
  Setting profile =
      Describe(view, {"mac_filter_profile_id", "policy", Form::Text}, filter, "policy", *network.now, words);
  const std::string policy = profile.was.value_or("");
  const bool is_wanted = !LooksOff(policy);
  profile.fell_back = view.IsWholeMigration() && is_wanted && profile.now == -1;
  settings.push_back(std::move(profile));
  return settings;
}

std::vector<std::string> WPSFiles(const RunView& view) {
  if (IsSmartConnectOn(view)) return {kAllBandsFile};
  std::vector<std::string> files;
  files.reserve(view.Radios().size());
  for (const RadioView& radio : view.Radios()) {
    files.push_back(radio.file);
    if (view.Was(radio.file, "ap_enable_wps") == "yes") break;
  }
  return files;
}

std::vector<Setting> WPSSettings(const RunView& view) {
  const Json::Value* const wps = view.Document("wps.json");
  if (wps == nullptr) return {};
  const Json::Value& words = Properties("wps", "");
  std::vector<Setting> settings;
  for (const Member& member :
       {Member{"enabled", nullptr, Form::Fixed}, Member{"band", nullptr, Form::Fixed},
        Member{"pin_enabled", "is_wps_ap_pin_enabled", Form::Flag}, Member{"pin", "wps_ap_pin", Form::Pin}}) {
    settings.push_back(
        Describe(view, member, kWPSFile, member.key == nullptr ? "" : member.key, *wps, words));
  }
  settings.front().fell_back = view.IsWholeMigration() && IsWPSWordLost(view);
  return settings;
}

std::vector<Setting> DeviceSettings(const RunView& view) {
  std::vector<Setting> settings;
  const Json::Value* const global = view.Document("global.json");
  if (global != nullptr && global->isObject()) {
    const Json::Value& words = Properties("global", "");
    settings.push_back(Fact(view, "defaultModel", "kelpbios", *global, words, 0));
    settings.push_back(
        Fact(view, "connectedModels", nullptr, (*global)["meshInfo"], words["meshInfo"]["properties"], 140));
    settings.push_back(Fact(view, "isRepeater", "mesh_network_role", (*global)["meshInfo"],
                            words["meshInfo"]["properties"], 140));
    settings.back().fell_back = settings.back().fell_back || !LostRepeaterRole(view).empty();
    settings.push_back(Fact(view, "countryCode", "country_code", (*global)["countryCodeSetting"],
                            words["countryCodeSetting"]["properties"], 280));
    settings.push_back(Fact(view, "backhaulSwapped", "mesh_swap_backhaul_band", *global, words, 300));
    settings.back().fell_back = settings.back().fell_back || MaybeMeantYes(settings.back().was);
  }
  const Json::Value* const misc = view.Document("misc.json");
  if (misc != nullptr && misc->isObject()) {
    const Json::Value& words = Properties("misc", "");
    settings.push_back(Fact(view, "netTopology", "net_topology", *misc, words, 168));
    const Json::Value& detect = (*misc)["broadcastDetect"];
    const Json::Value& detect_words = words["broadcastDetect"]["properties"];
    const std::string file = std::string(kFilterFolder) + "mf.setting";
    for (const Member& member : {Member{"enabled", "broadcast_detect_enabled", Form::Flag},
                                 Member{"threshold", "broadcast_threshold", Form::Number}}) {
      settings.push_back(Describe(view, member, file, member.key, detect, detect_words));
      settings.back().member = std::string("broadcastDetect.") + member.name;
    }
    Setting& detection = settings[settings.size() - 2];
    const bool is_off = detection.was == "yes" && detection.now == false;
    detection.fell_back = detection.fell_back || (view.IsWholeMigration() && is_off);
  }
  return settings;
}

}  // namespace lab
