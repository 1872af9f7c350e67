#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"

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
/// Flags of a radio, without a guest's form.
constexpr const char* kRadioFlags[]{"force_24g_40mhz", "allow_dfs_channels", "ap_enable_wps"};

/// Numbers by the members that they become.
struct Number {
  // cppcheck-suppress unusedStructMember  ; taken apart by name below
  const char* key;
  // cppcheck-suppress unusedStructMember  ; as above
  const char* member;
};
constexpr Number kNetworkNumbers[]{{"max_num_client", "max_num_client"},
                                   {"auth_server_Port", "auth_server_port"},
                                   {"key_rotation", "key_rotation"},
                                   {"dtim", "dtim"}};

void FindFlag(const Rehearsal& rehearsal, const std::string& file, std::string_view key, Findings& findings) {
  if (IsUnclearFlag(rehearsal.Was(file, key))) {
    findings.Add("flag-unknown", ToldOf(rehearsal, file, key));
  }
}

void FindOfNetwork(const Place& place, Findings& findings) {
  for (const char* key : kNetworkFlags) {
    FindFlag(place.rehearsal, place.radio.file, place.network.Key(key), findings);
  }
  for (const auto& [key, member] : kNetworkNumbers) {
    const std::string word = place.Was(key).value_or("");
    const int now = NumberIn(*place.radio.now, member, 0);
    if (!IsReadWhole(word, now)) {
      findings.Add("number-unreadable", place.Told(key) + " is now " + std::to_string(now));
    }
  }
}

}  // namespace

void FindAboutWords(const Rehearsal& rehearsal, Findings& findings) {
  ForEachPlace(rehearsal, [&](const Place& place) { FindOfNetwork(place, findings); });
  for (const RadioPart& radio : rehearsal.Radios()) {
    for (const char* key : kRadioFlags) FindFlag(rehearsal, radio.file, key, findings);
  }
  for (const NetworkPart& network : rehearsal.Networks()) {
    const char* const key = network.is_guest ? "smartconnect_guest_enabled" : "smartconnect_enabled";
    FindFlag(rehearsal, network.radios.front().file, key, findings);
  }
  FindFlag(rehearsal, kWPSFile, "is_wps_ap_pin_enabled", findings);
  FindFlag(rehearsal, kInformationStore, "mesh_swap_backhaul_band", findings);
}

}  // namespace lab
