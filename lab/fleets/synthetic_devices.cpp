#include "lab/fleets/synthetic_devices.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "lab/images/secret_seal.h"
#include "lab/text/base64.h"
#include "lab/text/key_value.h"

namespace lab::fleets {
namespace {

constexpr const char* kWifi = "/usr/kelp/etc/wifi/";
constexpr const char* kFilters = "/etc/hostapd/mac_filter/";

/// Numbers that are the same everywhere, which those of the standard library's distributions are not:
/// splitmix64. The order of the calls decides, so no expression makes two of them whose order the compiler
/// may choose.
class Dice {
 public:
  Dice(std::uint64_t seed, std::uint64_t number)
      : state_((seed * 0x9E3779B97F4A7C15U) ^ ((number + 1) * 0xD1B54A32D192ED03U)) {
    Next();
  }

  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }

  /// 0 to `count` - 1.
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
  bool OneIn(std::size_t count) { return Below(count) == 0; }
  bool Percent(std::size_t share) { return Below(100) < share; }

  template <typename Choices>
  auto Of(const Choices& choices) -> decltype(*std::begin(choices)) {
    return *(std::begin(choices) + static_cast<std::ptrdiff_t>(Below(std::size(choices))));
  }

  std::string Hex(std::size_t digits) {
    std::string text;
    while (text.size() < digits) text += "0123456789abcdef"[Below(16)];
    return text;
  }

  std::string Digits(std::size_t digits) {
    std::string text;
    while (text.size() < digits) text += static_cast<char>('0' + Below(10));
    return text;
  }

  std::string Bytes(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) bytes += static_cast<char>(Below(256));
    return bytes;
  }

 private:
  std::uint64_t state_;
};

constexpr std::array<std::string_view, 12> kNames{"Harbour",    "Maple Street", "Nordlicht", "La Casita",
                                                  "Family Net", "Attic",        "Café Ada",  "Müller",
                                                  "さくら",     "Wohnzimmer",   "Sea View",  "Unit 7"};
constexpr std::array<std::string_view, 8> kPasswords{"correct horse", "summer rain 42", "0123456789",
                                                     "grüne Wiese",   "open sesame!",   "river & stone",
                                                     "p4ssw0rd-x",    "hunter's moon"};
constexpr std::array<std::string_view, 10> kThings{"TV",      "Phone",  "Laptop", "Printer", "Doorbell",
                                                   "Console", "Camera", "Tablet", "Heating", "Speaker"};
constexpr std::array<std::string_view, 8> kCountries{"DE", "US", "JP", "FR", "GB", "SE", "BR", "AU"};
constexpr std::array<std::string_view, 4> kModels{"orchid", "lotus", "maple", "cedar"};

std::string WithColons(const std::string& digits) {
  std::string mac;
  for (std::size_t i = 0; i < digits.size(); i += 2) mac += (mac.empty() ? "" : ":") + digits.substr(i, 2);
  return mac;
}

using Entries = std::vector<std::pair<std::string, std::string>>;

/// A household and its device, put together from choices.
class Maker {
 public:
  Maker(std::uint64_t seed, std::size_t number, bool plain) : dice_(seed, number), plain_(plain) {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "device-%06zu", number);
    device_.source.image = name.data();
  }

  SyntheticDevice Make() {
    ChooseDevice();
    if (is_13_) {
      Make13();
    } else {
      Make125();
    }
    MakeFacts();
    if (!plain_ && dice_.Percent(30)) Trouble();
    return std::move(device_);
  }

 private:
  struct Network {
    std::string prefix;
    std::string ssid;
    std::string password;
    std::string security;
  };

  std::string& File(const std::string& path) { return device_.files[path]; }

  void ChooseDevice() {
    model_ = dice_.Of(kModels);
    is_repeater_ = dice_.Percent(15);
    has_nodes_ = !is_repeater_ && dice_.Percent(30);
    is_bridge_ = !is_repeater_ && dice_.Percent(15);
    is_13_ = dice_.Percent(15);
    key_ = dice_.Hex(64);
    device_.source.from = std::to_string(is_13_ ? 8228 + dice_.Below(997) : 7600 + dice_.Below(628));
    for (std::size_t entry = 0; entry < 6; ++entry) macs_.push_back(dice_.Hex(11) + std::to_string(entry));
    for (std::string& mac : macs_) mac.replace(0, 10, macs_.front().substr(0, 10));
  }

  void MakeFacts() {
    Entries facts{{"kelpbios", std::string(model_)},
                  {"mesh_network_role", is_repeater_ ? "re" : "ap"},
                  {"net_topology", is_bridge_ ? "bridge" : "router"},
                  {"country_code", std::string(dice_.Of(kCountries))},
                  {"mesh_swap_backhaul_band", dice_.OneIn(5) ? "yes" : "no"},
                  {"wps_pin", dice_.Digits(8)},
                  {"serial", "KA" + dice_.Digits(10)}};
    File("/usr/kelp/etc/info.conf") = KeyValueText(facts);
    File("/usr/kelp/etc/secret.key") = key_ + "\n";
    File("/usr/kelp/etc/mesh/mesh.conf") =
        has_nodes_ ? "{\"repeater_nodes\": [{\"name\": \"Garage\", \"model\": \"lotus\"}]}\n"
                   : "{\"repeater_nodes\": []}\n";
    for (std::size_t entry = 0; entry < macs_.size(); ++entry) {
      device_.source.files["/proc/sys/kernel/kelp_mac_address" + std::to_string(entry)] = macs_[entry] + "\n";
    }
    device_.source.boot["usb3_disable"] = dice_.OneIn(5) ? "1" : "0";
  }

  void Make13() {
    const std::string folder = kWifi;
    constexpr std::array<std::string_view, 4> kModelNames{"ORCHID", "LOTUS", "MAPLE", "CEDAR"};
    File(folder + "model.json") =
        has_nodes_ || is_repeater_
            ? "{\"connected_models\": [\"" + std::string(dice_.Of(kModelNames)) + "\"]}\n"
            : "{\"connected_models\": []}\n";
    File(folder + "country.json") = "{\"country_code\": \"" + std::string(dice_.Of(kCountries)) + "\"}\n";
    File(folder + "backhaul.json") = std::string("{\"radio_frequencies\": [\"") +
                                     (dice_.OneIn(4) ? "Band5GHz_2" : "Band5GHz_1") + "\"]}\n";
    File("/usr/kelp/etc/mesh/mesh_role.conf") = std::string("role=") + (is_repeater_ ? "re" : "ap") + "\n";
  }

  void Make125() {
    const std::string folder = kWifi;
    MakeRadios();
    File(folder + "lbd.conf") = "ConfigId=1\n";
    File(folder + "lbd.guest.conf") = "ConfigId=2\n";
    File(folder + "wifi_nvram") = "wl0_country_code=" + std::string(dice_.Of(kCountries)) + "\n";
    File(folder + "wifi_wps") = KeyValueText(
        {{"is_wps_ap_pin_enabled", dice_.OneIn(10) ? "yes" : "no"}, {"wps_ap_pin", dice_.Digits(8)}});
    MakeFilters();
  }

  std::vector<std::string> RadioAddresses() const {
    const bool is_orchid = model_ == "orchid";
    std::vector<std::string> addresses{"00:00:00:00:00:00"};
    addresses.push_back(WithColons(macs_[is_orchid ? 4 : 3]));
    addresses.push_back(WithColons(macs_[is_orchid ? 5 : 4]));
    const bool has_two_bands = is_orchid && !is_repeater_ && !has_nodes_;
    if (!has_two_bands) addresses.push_back(is_orchid ? "11:11:11:11:11:11" : WithColons(macs_[5]));
    return addresses;
  }

  void MakeRadios() {
    constexpr std::array<std::string_view, 7> kSecurities{
        "PERSONAL_WPA2",      "PERSONAL_WPA2", "PERSONAL_WPA2",  "PERSONAL_WPA2_WPA3_MIXED",
        "PERSONAL_WPA_MIXED", "PERSONAL_WPA3", "ENTERPRISE_WPA2"};
    const std::string name(dice_.Of(kNames));
    const Network primary{"", name, std::string(dice_.Of(kPasswords)), std::string(dice_.Of(kSecurities))};
    const bool guests_are_free = dice_.OneIn(10);
    const Network guest{"guest_", name + " Guests", std::string(dice_.Of(kPasswords)),
                        guests_are_free ? "disabled" : "PERSONAL_WPA2"};
    const bool has_guests = dice_.Percent(40);
    const bool is_smart = dice_.Percent(40);
    const bool has_wps = dice_.Percent(25);
    const std::vector<std::string> addresses = RadioAddresses();
    for (std::size_t place = 0; place < addresses.size(); ++place) {
      Entries entries;
      AddNetwork(entries, primary, true);
      AddNetwork(entries, guest, has_guests);
      AddRotation(entries);
      AddRadio(entries, place, is_smart, has_wps);
      radio_files_.push_back(kWifi + ("wifi_ap_" + addresses[place]));
      File(radio_files_.back()) = KeyValueText(entries);
    }
  }

  void AddNetwork(Entries& entries, const Network& network, bool is_enabled) {
    const std::string& prefix = network.prefix;
    const bool is_enterprise = network.security.starts_with("ENTERPRISE");
    const bool is_open = network.security == "disabled";
    const std::string sealed = SealSecret(network.password, key_, dice_.Bytes(24));
    const auto add = [&](const char* key, std::string value) {
      entries.emplace_back(prefix + key, std::move(value));
    };
    add("enabled", is_enabled ? "yes" : "no");
    add("ssid", ToBase64(network.ssid));
    add("display_ssid", "yes");
    add("max_num_client", prefix.empty() ? "128" : "32");
    add("allow_access_guest", "no");
    add("security", network.security);
    add("password", is_open || is_enterprise ? SealSecret("unused", key_, dice_.Bytes(24)) : sealed);
    add("auth_server_ip", is_enterprise ? "192.168.1.20" : "");
    add("auth_server_Port", "1812");
    add("auth_server_shared_secret", is_enterprise ? sealed : "");
    add("schedule_enabled", "no");
    add("schedule", "");
    add("pmf_mode", network.security == "PERSONAL_WPA3" ? "required" : "capable");
    for (const char* flag : {"ampdu", "uapsd_enable", "ap_mcast_translating"}) add(flag, "yes");
    for (const char* flag : {"ap_mumimo", "ap_enable_11r", "country_abbrev_override_enable", "ap_isolation",
                             "enable_ext_nss", "sc_disable_legacy_steering"}) {
      add(flag, dice_.OneIn(4) ? "yes" : "no");
    }
    add("key_rotation", "3600");
    add("dtim", "1");
  }

  void AddRotation(Entries& entries) {
    constexpr std::array<std::string_view, 3> kStrengths{"low", "medium", "high"};
    const std::string prefix = "guest_pwd_rotate_";
    entries.emplace_back(prefix + "enable", dice_.OneIn(10) ? "yes" : "no");
    entries.emplace_back(prefix + "date_type", dice_.OneIn(2) ? "0" : "1");
    entries.emplace_back(prefix + "strength", dice_.Of(kStrengths));
    const std::size_t month = 1 + dice_.Below(12);
    const std::size_t day = 1 + dice_.Below(28);
    entries.emplace_back(prefix + "date", "2024/" + std::to_string(month) + "/" + std::to_string(day));
    entries.emplace_back(prefix + "hour", std::to_string(dice_.Below(24)));
    entries.emplace_back(prefix + "minute", std::to_string(dice_.Below(60)));
    entries.emplace_back(prefix + "week_day", "1,4");
    entries.emplace_back(prefix + "notify_enable", "no");
    entries.emplace_back(prefix + "mail_list", "");
  }

  void AddRadio(Entries& entries, std::size_t place, bool is_smart, bool has_wps) {
    constexpr std::array<std::string_view, 2> kSlow{"20MHZ", "20_40MHZ"};
    constexpr std::array<std::string_view, 2> kFast{"20_40_80MHZ", "20_40_80_160MHZ"};
    const bool is_slow = place <= 1;
    entries.emplace_back("channel", is_slow ? std::to_string(1 + dice_.Below(11)) : "36");
    entries.emplace_back("channel2", "0");
    entries.emplace_back("bandwidth", is_slow ? dice_.Of(kSlow) : dice_.Of(kFast));
    entries.emplace_back("force_24g_40mhz", "no");
    entries.emplace_back("mode", is_slow ? "bgn" : "an+ac");
    entries.emplace_back("tx_power", "high");
    entries.emplace_back("allow_dfs_channels", "no");
    entries.emplace_back("ap_enable_wps", has_wps ? "yes" : "no");
    entries.emplace_back("smartconnect_enabled", is_smart && place == 0 ? "yes" : "no");
    entries.emplace_back("smartconnect_guest_enabled", is_smart && place == 0 ? "yes" : "no");
  }

  void MakeFilters() {
    const std::string folder = kFilters;
    constexpr std::array<std::string_view, 3> kPolicies{"disabled", "deny", "allow"};
    const std::string policy(dice_.Percent(80) ? kPolicies[0] : dice_.Of(kPolicies));
    File(folder + "mf.info") = "policy=" + policy + "\n";
    File(folder + "mf_guest.info") = "policy=disabled\n";
    File(folder + "mf.setting") = "broadcast_detect_enabled=no\nbroadcast_threshold=100\n";
    for (const char* list : {"mf_deny.conf", "mf_allow.conf"}) {
      std::string& text = File(folder + list);
      const std::size_t stations = policy == "disabled" ? dice_.Below(2) : 1 + dice_.Below(12);
      for (std::size_t station = 0; station < stations; ++station) {
        const std::string name(dice_.Of(kThings));
        const std::string mac = WithColons(dice_.Hex(12));
        text +=
            "[station_" + std::to_string(station) + "]\nenable=yes\ndesc=" + name + "\nmac=" + mac + "\n\n";
      }
    }
  }

  /// What real devices have.
  void Trouble() {
    if (is_13_) {
      Trouble13();
      return;
    }
    std::string& radio = File(radio_files_.at(dice_.Below(radio_files_.size())));
    switch (dice_.Below(14)) {
      case 0:  // a name in Latin-1
        SetValue(radio, "ssid", ToBase64("Caf\xE9 M\xFCller"));
        break;
      case 1:  // one in Shift_JIS
        SetValue(radio, "ssid", ToBase64("\x93\x91\x94\x92\x8E\xBA"));
        break;
      case 2:  // a file that went through another editor
        ReplaceLineEnds(radio);
        break;
      case 3: {  // sealed elsewhere
        const std::string other_key = dice_.Hex(64);
        SetValue(radio, "password", SealSecret("not to be opened", other_key, dice_.Bytes(24)));
        break;
      }
      case 4:  // never sealed
        SetValue(radio, "password", std::string(dice_.Of(kPasswords)));
        break;
      case 5:
        SetValue(radio, "security", dice_.OneIn(2) ? "WPA2PSK" : "PERSONAL_WPA4");
        break;
      case 6:
        SetValue(radio, "pmf_mode", "optional");
        SetValue(radio, "tx_power", "auto");
        break;
      case 7:
        SetValue(radio, "bandwidth", "40MHZ");
        SetValue(radio, "mode", "ax");
        break;
      case 8:
        device_.files.erase(std::string(kWifi) + "lbd.guest.conf");
        break;
      case 9:
        device_.files.erase(radio_files_.back());
        break;
      case 10:
        File(std::string(kFilters) + "mf.info") = "policy=deny\n";
        File(std::string(kFilters) + "mf_deny.conf") +=
            "[station_x]\nenable=yes\ndesc=Old phone\nmac=3c-6a:9d-2e:f4\n";
        break;
      case 11:  // an upgrade that had broken off
        File(std::string(kWifi) + "global.json") = "{}\n";
        break;
      case 12:
        SetValue(File("/usr/kelp/etc/info.conf"), "country_code", "eu");
        break;
      default:
        SetValue(File("/usr/kelp/etc/info.conf"), "net_topology", dice_.OneIn(2) ? "repeater" : "");
        break;
    }
  }

  void Trouble13() {
    const std::string folder = kWifi;
    switch (dice_.Below(4)) {
      case 0:
        device_.files.erase(folder + "backhaul.json");
        break;
      case 1:
        File(folder + "country.json") = "{\"country_code\": \"eu\"}\n";
        break;
      case 2:
        File(folder + "model.json") = "{\"connected_models\": [\"lotus\"]}\n";
        break;
      default:
        File(folder + "model.json").resize(10);
        break;
    }
  }

  static void SetValue(std::string& text, std::string_view key, std::string_view value) {
    text = WithValue(text, key, value);
  }

  static void ReplaceLineEnds(std::string& text) {
    std::string replaced;
    for (const char character : text)
      replaced += character == '\n' ? std::string("\r\n") : std::string(1, character);
    text = replaced;
  }

  Dice dice_;
  bool plain_;
  SyntheticDevice device_;
  std::string_view model_;
  bool is_repeater_ = false;
  bool has_nodes_ = false;
  bool is_bridge_ = false;
  bool is_13_ = false;
  std::string key_;
  std::vector<std::string> macs_;  // digits only
  std::vector<std::string> radio_files_;
};

}  // namespace

SyntheticDevice MakeSyntheticDevice(std::uint64_t seed, std::size_t number, bool plain) {
  return Maker(seed, number, plain).Make();
}

}  // namespace lab::fleets
