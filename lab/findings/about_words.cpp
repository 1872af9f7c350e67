#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"
#include "lab/households/legacy_words.h"
#include "lab/households/settings.h"

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

void FindFlag(const Rehearsal& rehearsal, const std::string& file, std::string_view key, Findings& findings) {
  if (IsLostFlag(rehearsal.Was(file, key))) {
    findings.Add("flag-unknown", ToldOf(rehearsal, file, key));
  }
}

void FindNumber(const Place& place, const Number& number, Findings& findings) {
  const int now = NumberIn(*place.radio.now, number.member, 0);
  if (!IsReadWhole(place.Was(number.key).value_or(""), now)) {
    findings.Add("number-unreadable", place.Told(number.key) + " is now " + std::to_string(now));
  }
}

void FindOfNetwork(const Place& place, Findings& findings) {
  for (const char* key : kNetworkFlags) {
    FindFlag(place.rehearsal, place.radio.file, place.network.Key(key), findings);
  }
  for (const Number& number : kNetworkNumbers) FindNumber(place, number, findings);
  const int security = NumberIn(*place.radio.now, "security", 0);
  if (security >= kFirstEnterprise && security <= kLastEnterprise) FindNumber(place, kServerPort, findings);
}

/// "auto" is how the legacy files write the channel 0.
void FindChannels(const Rehearsal& rehearsal, const RadioPart& radio, Findings& findings) {
  for (const char* key : {"channel", "channel2"}) {
    const std::string word = rehearsal.Was(radio.file, key).value_or("");
    const int now = NumberIn(*radio.now, key, 0);
    const bool is_automatic = now == 0 && PlainWord(word) == "auto";
    if (is_automatic || IsReadWhole(word, now)) continue;
    findings.Add("number-unreadable", ToldOf(rehearsal, radio.file, key) + " is now " + std::to_string(now));
  }
}

/// The flags by which the radios are set, in the files that decide.
void FindRadioFlags(const Rehearsal& rehearsal, Findings& findings) {
  for (const RadioPart& radio : rehearsal.Radios()) {
    if (radio.frequency == kBand2_4GHz) FindFlag(rehearsal, radio.file, "force_24g_40mhz", findings);
    if (!IsSmartConnectOn(rehearsal)) FindFlag(rehearsal, radio.file, "allow_dfs_channels", findings);
  }
  if (IsSmartConnectOn(rehearsal)) FindFlag(rehearsal, kAllBandsFile, "allow_dfs_channels", findings);
  for (const std::string& file : WPSFiles(rehearsal)) FindFlag(rehearsal, file, "ap_enable_wps", findings);
}

}  // namespace

void FindAboutWords(const Rehearsal& rehearsal, Findings& findings) {
  FindInPlaces(rehearsal, findings, [&](const Place& place) { FindOfNetwork(place, findings); });
  for (const RadioPart& radio : rehearsal.Radios()) FindChannels(rehearsal, radio, findings);
  FindRadioFlags(rehearsal, findings);
  for (const NetworkPart& network : rehearsal.Networks()) {
    const char* const key = network.is_guest ? "smartconnect_guest_enabled" : "smartconnect_enabled";
    FindFlag(rehearsal, network.radios.front().file, key, findings);
  }
  FindFlag(rehearsal, kWPSFile, "is_wps_ap_pin_enabled", findings);
  FindFlag(rehearsal, kInformationStore, "mesh_swap_backhaul_band", findings);
}

}  // namespace lab
