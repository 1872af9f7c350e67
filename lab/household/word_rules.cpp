#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/legacy_words.h"
#include "lab/household/places.h"
#include "lab/household/rules.h"
#include "lab/household/settings.h"

namespace lab {
namespace {

/// Flags of a network on a radio of which no other rule tells.
constexpr const char* kNetworkFlags[]{"display_ssid",
                                      "schedule_enabled",
                                      "ampdu",
                                      "uapsd_enable",
                                      "ap_mumimo",
                                      "ap_enable_11r",
                                      "ap_mcast_translating",
                                      "country_abbrev_override_enable",
                                      "enable_ext_nss",
                                      "sc_disable_legacy_steering",
                                      "pwd_rotate_notify_enable"};

constexpr int kBand2_4GHz = 1;
constexpr int kFirstEnterprise = 8;
constexpr int kLastEnterprise = 11;

/// Numbers by the members that they become.
struct Number {
  // cppcheck-suppress unusedStructMember  ; taken apart by name below
  const char* key;
  // cppcheck-suppress unusedStructMember  ; as above
  const char* member;
};
constexpr Number kServerPort{"auth_server_Port", "auth_server_port"};
constexpr Number kNetworkNumbers[]{
    {"max_num_client", "max_num_client"}, {"key_rotation", "key_rotation"}, {"dtim", "dtim"}};

void FindFlag(const RunView& view, const std::string& file, std::string_view key,
              FindingCollector& findings) {
  if (MaybeMeantYes(view.Was(file, key))) {
    findings.Add("flag-unknown", ToldOf(view, file, key));
  }
}

void FindNumber(const Place& place, const Number& number, FindingCollector& findings) {
  const int now = NumberIn(*place.radio.now, number.member, 0);
  if (!IsExactNumber(place.Was(number.key).value_or(""), now)) {
    findings.Add("number-unreadable", place.Told(number.key) + " is now " + std::to_string(now));
  }
}

void FindOfNetwork(const Place& place, FindingCollector& findings) {
  for (const char* key : kNetworkFlags) {
    FindFlag(place.view, place.radio.file, place.network.Key(key), findings);
  }
  for (const Number& number : kNetworkNumbers) FindNumber(place, number, findings);
  const int security = NumberIn(*place.radio.now, "security", 0);
  if (security >= kFirstEnterprise && security <= kLastEnterprise) FindNumber(place, kServerPort, findings);
}

/// "auto" is how the legacy files write the channel 0.
void FindChannels(const RunView& view, const RadioView& radio, FindingCollector& findings) {
  for (const char* key : {"channel", "channel2"}) {
    const std::string word = view.Was(radio.file, key).value_or("");
    const int now = NumberIn(*radio.now, key, 0);
    const bool is_automatic = now == 0 && NormalizeValue(word) == "auto";
    if (is_automatic || IsExactNumber(word, now)) continue;
    findings.Add("number-unreadable", ToldOf(view, radio.file, key) + " is now " + std::to_string(now));
  }
}

/// The flags by which the radios are set, in the files that decide.
void FindRadioFlags(const RunView& view, FindingCollector& findings) {
  for (const RadioView& radio : view.Radios()) {
    if (radio.frequency == kBand2_4GHz) FindFlag(view, radio.file, "force_24g_40mhz", findings);
    if (!IsSmartConnectOn(view)) FindFlag(view, radio.file, "allow_dfs_channels", findings);
  }
  if (IsSmartConnectOn(view)) FindFlag(view, kAllBandsFile, "allow_dfs_channels", findings);
  for (const std::string& file : WPSFiles(view)) FindFlag(view, file, "ap_enable_wps", findings);
}

}  // namespace

void CheckWords(const RunView& view, FindingCollector& findings) {
  ForEachNetworkOnRadio(view, findings, [&](const Place& place) { FindOfNetwork(place, findings); });
  for (const RadioView& radio : view.Radios()) FindChannels(view, radio, findings);
  FindRadioFlags(view, findings);
  for (const NetworkView& network : view.Networks()) {
    const char* const key = network.is_guest ? "smartconnect_guest_enabled" : "smartconnect_enabled";
    FindFlag(view, network.radios.front().file, key, findings);
  }
  FindFlag(view, kWPSFile, "is_wps_ap_pin_enabled", findings);
  FindFlag(view, kInformationStore, "mesh_swap_backhaul_band", findings);
}

}  // namespace lab
