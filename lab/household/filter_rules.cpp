#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/legacy_words.h"
#include "lab/household/places.h"
#include "lab/household/rules.h"
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

std::vector<Station> StationsOf(const RunView& view, const std::string& list) {
  const std::vector<LegacyEntry> entries = ParseSectionText(view.TextOf(list));
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
std::string FirstMalformed(const RunView& view) {
  for (const std::string& list : {kDenyList, kAllowList}) {
    for (const Station& station : StationsOf(view, list)) {
      if (station.enable != "yes" || IsAddress(station.mac)) continue;
      return NameOf(list) + ": [" + station.section + "] mac=" + station.mac;
    }
  }
  return "";
}

std::string WhyOff(const RunView& view, const std::string& list) {
  const std::string malformed = FirstMalformed(view);
  if (!malformed.empty()) return malformed + " is no address and empties all lists";
  if (!view.Had(list)) {
    return NameOf(list) + (view.Run().before.contains(list) ? " cannot be read" : " is missing");
  }
  return NameOf(list) + " has no enabled entry";
}

bool IsOffEverywhere(const RunView& view, const NetworkView& network) {
  return std::ranges::all_of(network.radios, [&](const RadioView& radio) {
    return LooksOff(view.Was(radio.file, network.Key("enabled")).value_or(""));
  });
}

void FindForNetwork(const RunView& view, const NetworkView& network, FindingCollector& findings) {
  const std::string file = kFilterFolder + std::string(network.is_guest ? "mf_guest.info" : "mf.info");
  const std::string policy = view.Was(file, "policy").value_or("");
  if (LooksOff(policy)) return;
  if (policy != "deny" && policy != "allow") {
    findings.Add("filter-policy-unknown", ToldOf(view, file, "policy"));
    return;
  }
  const std::string& list = policy == "deny" ? kDenyList : kAllowList;
  if (NumberIn(*network.now, "mac_filter_profile_id", kNoProfile) == kNoProfile) {
    findings.Add("filter-off", ToldOf(view, file, "policy") + ", but " + WhyOff(view, list));
  }
}

void FindLeftOut(const RunView& view, const std::string& list, FindingCollector& findings) {
  for (const Station& station : StationsOf(view, list)) {
    if (station.enable == "yes" || LooksOff(station.enable)) continue;
    findings.Add("filter-entry-left-out",
                 NameOf(list) + ": [" + station.section + "] enable=" + station.enable);
  }
}

/// Whether a network asks for the list.
bool IsWanted(const RunView& view, std::string_view policy) {
  const std::string folder = kFilterFolder;
  return view.Was(folder + "mf.info", "policy") == policy ||
         view.Was(folder + "mf_guest.info", "policy") == policy;
}

void FindBroadcast(const RunView& view, FindingCollector& findings) {
  const Json::Value* const misc = view.Document("misc.json");
  const std::string file = std::string(kFilterFolder) + "mf.setting";
  const std::string word = view.Was(file, "broadcast_detect_enabled").value_or("");
  if (misc == nullptr || !misc->isObject() || LooksOff(word)) return;
  const Json::Value& detection = (*misc)["broadcastDetect"];
  if (FlagIn(detection, "enabled")) {
    const std::string threshold = view.Was(file, "broadcast_threshold").value_or("");
    const int now = NumberIn(detection, "threshold", 0);
    if (!IsExactNumber(threshold, now)) {
      findings.Add("number-unreadable",
                   ToldOf(view, file, "broadcast_threshold") + " is now " + std::to_string(now));
    }
    return;
  }
  findings.Add("broadcast-detection-off", ToldOf(view, file, "broadcast_detect_enabled") + ", " +
                                              ToldOf(view, file, "broadcast_threshold"));
}

}  // namespace

void CheckFilters(const RunView& view, FindingCollector& findings) {
  for (const NetworkView& network : view.Networks()) {
    const std::size_t place = findings.Count();
    FindForNetwork(view, network, findings);
    if (IsOffEverywhere(view, network)) findings.NoteFrom(place, kOffNote);
  }
  if (IsWanted(view, "deny")) FindLeftOut(view, kDenyList, findings);
  if (IsWanted(view, "allow")) FindLeftOut(view, kAllowList, findings);
  FindBroadcast(view, findings);
}

}  // namespace lab
