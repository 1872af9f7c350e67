#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"
#include "lab/households/legacy_words.h"
#include "platform/mac_address.h"

namespace lab {
namespace {

constexpr int kNoProfile = -1;

const std::string kDenyList = std::string(kFilterFolder) + "mf_deny.conf";
const std::string kAllowList = std::string(kFilterFolder) + "mf_allow.conf";

/// One device of a filter list.
struct Station {
  std::string section;
  std::string enable;
  std::string mac;
};

std::vector<Station> StationsOf(const Rehearsal& rehearsal, const std::string& list) {
  const std::vector<LegacyEntry> entries = ParseSectionText(rehearsal.TextOf(list));
  std::vector<Station> stations;
  std::set<std::string> seen;
  for (const LegacyEntry& entry : entries) {
    if (!seen.insert(entry.section).second) continue;
    stations.push_back({entry.section, FindValue(entries, "enable", entry.section).value_or(""),
                        FindValue(entries, "mac", entry.section).value_or("")});
  }
  return stations;
}

bool IsAddress(const std::string& text) {
  try {
    static_cast<void>(KELP::Wifi::Util::MACAddress(text));
    return true;
  } catch (const std::invalid_argument&) {
    return false;
  }
}

/// Why no list made a profile: the first enabled section whose address is none.
std::string FirstMalformed(const Rehearsal& rehearsal) {
  for (const std::string& list : {kDenyList, kAllowList}) {
    for (const Station& station : StationsOf(rehearsal, list)) {
      if (station.enable != "yes" || IsAddress(station.mac)) continue;
      return NameOf(list) + ": [" + station.section + "] mac=" + station.mac;
    }
  }
  return "";
}

std::string WhyOff(const Rehearsal& rehearsal, const std::string& list) {
  const std::string malformed = FirstMalformed(rehearsal);
  if (!malformed.empty()) return malformed + " is no address and empties all lists";
  if (!rehearsal.Had(list)) {
    return NameOf(list) + (rehearsal.Run().before.contains(list) ? " cannot be read" : " is missing");
  }
  return NameOf(list) + " has no enabled entry";
}

bool IsOffEverywhere(const Rehearsal& rehearsal, const NetworkPart& network) {
  return std::ranges::all_of(network.radios, [&](const RadioPart& radio) {
    return SaysOff(rehearsal.Was(radio.file, network.Key("enabled")).value_or(""));
  });
}

void FindForNetwork(const Rehearsal& rehearsal, const NetworkPart& network, Findings& findings) {
  const std::string file = kFilterFolder + std::string(network.is_guest ? "mf_guest.info" : "mf.info");
  const std::string policy = rehearsal.Was(file, "policy").value_or("");
  if (SaysOff(policy)) return;
  if (policy != "deny" && policy != "allow") {
    findings.Add("filter-policy-unknown", ToldOf(rehearsal, file, "policy"));
    return;
  }
  const std::string& list = policy == "deny" ? kDenyList : kAllowList;
  if (NumberIn(*network.now, "mac_filter_profile_id", kNoProfile) == kNoProfile) {
    findings.Add("filter-off", ToldOf(rehearsal, file, "policy") + ", but " + WhyOff(rehearsal, list));
  }
}

void FindLeftOut(const Rehearsal& rehearsal, const std::string& list, Findings& findings) {
  for (const Station& station : StationsOf(rehearsal, list)) {
    if (station.enable == "yes" || SaysOff(station.enable)) continue;
    findings.Add("filter-entry-left-out",
                 NameOf(list) + ": [" + station.section + "] enable=" + station.enable);
  }
}

/// Whether a network asks for the list.
bool IsWanted(const Rehearsal& rehearsal, std::string_view policy) {
  const std::string folder = kFilterFolder;
  return rehearsal.Was(folder + "mf.info", "policy") == policy ||
         rehearsal.Was(folder + "mf_guest.info", "policy") == policy;
}

void FindBroadcast(const Rehearsal& rehearsal, Findings& findings) {
  const Json::Value* const misc = rehearsal.Document("misc.json");
  const std::string file = std::string(kFilterFolder) + "mf.setting";
  const std::string word = rehearsal.Was(file, "broadcast_detect_enabled").value_or("");
  if (misc == nullptr || !misc->isObject() || SaysOff(word)) return;
  const Json::Value& detection = (*misc)["broadcastDetect"];
  if (FlagIn(detection, "enabled")) {
    const std::string threshold = rehearsal.Was(file, "broadcast_threshold").value_or("");
    const int now = NumberIn(detection, "threshold", 0);
    if (!IsReadWhole(threshold, now)) {
      findings.Add("number-unreadable",
                   ToldOf(rehearsal, file, "broadcast_threshold") + " is now " + std::to_string(now));
    }
    return;
  }
  findings.Add("broadcast-detection-off", ToldOf(rehearsal, file, "broadcast_detect_enabled") + ", " +
                                              ToldOf(rehearsal, file, "broadcast_threshold"));
}

}  // namespace

void FindAboutFilters(const Rehearsal& rehearsal, Findings& findings) {
  for (const NetworkPart& network : rehearsal.Networks()) {
    const std::size_t place = findings.Count();
    FindForNetwork(rehearsal, network, findings);
    if (IsOffEverywhere(rehearsal, network)) findings.NoteFrom(place, kOffNote);
  }
  if (IsWanted(rehearsal, "deny")) FindLeftOut(rehearsal, kDenyList, findings);
  if (IsWanted(rehearsal, "allow")) FindLeftOut(rehearsal, kAllowList, findings);
  FindBroadcast(rehearsal, findings);
}

}  // namespace lab
