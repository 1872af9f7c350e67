#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/legacy_words.h"
#include "lab/household/rules.h"
#include "platform/mac_address.h"

namespace lab {
namespace {

constexpr int kNoProfile = -1;
constexpr int kDeny = 1;
constexpr int kAllow = 0;

/// One client of a filter list, as a person reads the file.
struct Station {
  /// The line with its name, as it is written.
  std::string header;
  std::string name;
  std::optional<std::string> enable;
  std::string mac;
  bool has_carriage_return = false;

  bool IsMeant() const { return enable && !LooksOff(*enable); }
};

std::string AddressIn(const std::string& text) {
  try {
    return KELP::Wifi::Util::MACAddress(text).ToString();
  } catch (const std::invalid_argument&) {
    return "";
  }
}

std::string_view Unquoted(std::string_view value) {
  const bool is_quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
  return is_quoted ? value.substr(1, value.size() - 2) : value;
}

/// Reads a line that may be an entry of the station: keys in any case, with white space around the parts.
void ReadEntry(std::string_view line, Station& station) {
  const std::size_t sign = line.find('=');
  if (sign == std::string_view::npos) return;
  const std::string key = NormalizeValue(line.substr(0, sign));
  const std::string_view whole = line.substr(sign + 1);
  const std::string value(Unquoted(TrimBlanks(whole)));
  station.has_carriage_return = station.has_carriage_return || whole.ends_with('\r');
  if (key == "enable" && !station.enable) station.enable = value;
  if (key == "mac" && station.mac.empty()) station.mac = value;
}

std::vector<Station> StationsOf(const RunView& view, const std::string& list) {
  std::vector<Station> stations;
  std::string_view text = view.TextOf(list);
  const char end_of_line = text.find('\n') == std::string_view::npos ? '\r' : '\n';
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(end_of_line), text.size());
    const std::string_view line = text.substr(0, end);
    const std::string_view plain = TrimBlanks(line);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (plain.starts_with('#') || plain.starts_with(';')) continue;
    if (plain.size() >= 2 && plain.front() == '[' && plain.back() == ']') {
      const bool has_return = line.ends_with('\r') || end_of_line == '\r';
      stations.push_back({std::string(line), std::string(plain), {}, "", has_return});
    } else if (!stations.empty()) {
      ReadEntry(line, stations.back());
    }
  }
  return stations;
}

/// What the documents have of a list: the addresses in the profiles of that policy.
std::vector<std::string> AddressesNow(const RunView& view, int policy) {
  std::vector<std::string> addresses;
  const Json::Value* const misc = view.Document("misc.json");
  if (misc == nullptr || !misc->isObject()) return addresses;
  for (const Json::Value& profile : (*misc)["macFilterProfiles"]) {
    if (NumberIn(profile, "policy", -1) != policy || !profile["devices"].isArray()) continue;
    for (const Json::Value& device : profile["devices"]) addresses.push_back(TextIn(device, "mac"));
    break;  // the other network's is a copy
  }
  return addresses;
}

/// The section whose address the program does not accept, for which it makes no list at all.
std::string FirstMalformed(const RunView& view) {
  for (const std::string list : {kDenyList, kAllowList}) {
    const std::vector<LegacyEntry> entries = ParseSectionText(view.TextOf(list));
    std::set<std::string> seen;
    for (const LegacyEntry& entry : entries) {
      if (!seen.insert(entry.section).second) continue;
      const std::string mac = FindValue(entries, "mac", entry.section).value_or("");
      if (FindValue(entries, "enable", entry.section) != "yes" || !AddressIn(mac).empty()) continue;
      return BaseName(list) + ": [" + entry.section + "] mac=" + mac;
    }
  }
  return "";
}

std::string WhyOff(const RunView& view, const std::string& list) {
  const std::string malformed = FirstMalformed(view);
  if (!malformed.empty()) return malformed + " is no address and empties all lists";
  if (!view.Had(list)) {
    return BaseName(list) + (view.Run().before.contains(list) ? " cannot be read" : " is missing");
  }
  return BaseName(list) + " has no enabled entry";
}

Cause CauseInList(const RunView& view, const std::string& list) {
  const std::vector<Station> stations = StationsOf(view, list);
  const bool has_return = std::ranges::any_of(stations, &Station::has_carriage_return);
  return CauseInFile(view, list, has_return);
}

bool HasMeantStations(const RunView& view, const std::string& list) {
  const std::vector<Station> stations = StationsOf(view, list);
  return std::ranges::any_of(stations, &Station::IsMeant);
}

StoredValue Policy(const RunView& view, bool is_guest) {
  return view.Stored(is_guest ? kGuestPolicyFile : kPrimaryPolicyFile, "policy");
}

/// A deny list on which nobody is refuses nobody, whether it counts or not.
bool RefusesAnybody(const RunView& view, const std::string& policy) {
  return policy != "deny" || !view.Had(kDenyList) || HasMeantStations(view, kDenyList);
}

Observations ObservePolicy(const RunView& view, const NetworkView& network) {
  const StoredValue policy = Policy(view, network.is_guest);
  const std::string word = NormalizeValue(policy.Word());
  const Cause cause = CauseInFile(view, policy.file, policy.has_carriage_return);
  const bool is_exact = policy.is_key_exact && policy.value == word;
  if (NumberIn(*network.now, "mac_filter_profile_id", kNoProfile) != kNoProfile) {
    return is_exact ? Observations{} : Observations{{kReadByLuck, policy.Detail()}};
  }
  if (word.empty()) {
    if (!HasMeantStations(view, kDenyList) && !HasMeantStations(view, kAllowList)) return {};
    return {{"setting-not-stored", policy.DetailWithoutValue() + " is not stored; now no filter", cause}};
  }
  if (LooksOff(word)) {
    if (is_exact && word == "disabled") return {};
    const bool has_lists = !AddressesNow(view, kDeny).empty() || !AddressesNow(view, kAllow).empty();
    return {{network.is_guest && has_lists ? "filter-lists-added" : kReadByLuck, policy.Detail(), cause}};
  }
  if (word != "deny" && word != "allow") return {{"filter-policy-unknown", policy.Detail(), cause}};
  if (!RefusesAnybody(view, word)) return {};
  if (!is_exact) return {{"filter-policy-unknown", policy.Detail(), cause}};
  const std::string list = word == "deny" ? kDenyList : kAllowList;
  return {{"filter-off", policy.Detail() + ", but " + WhyOff(view, list), CauseInList(view, list)}};
}

bool WasOn(const RunView& view, const NetworkView& network) {
  return std::ranges::any_of(network.radios,
                             [&](const RadioView& radio) { return WasEnabled(view, network, radio); });
}

/// Whether a network has the list now.
bool IsUsed(const RunView& view, std::string_view policy) {
  return std::ranges::any_of(view.Networks(), [&](const NetworkView& network) {
    return NumberIn(*network.now, "mac_filter_profile_id", kNoProfile) != kNoProfile &&
           NormalizeValue(Policy(view, network.is_guest).Word()) == policy;
  });
}

std::string WhyLeftOut(const Station& station, bool is_repeated) {
  if (station.header != station.name) return station.name + " has white space around its name";
  if (is_repeated) return station.name + " is there twice";
  return station.name + " enable=" + station.enable.value_or("");
}

/// What of the list is not in its profile. `is_used`: whether a network has the profile.
void CheckList(const RunView& view, const std::string& list, int policy, bool is_used,
               FindingCollector& findings) {
  std::vector<std::string> now = AddressesNow(view, policy);
  std::map<std::string, int> seen;
  for (const Station& station : StationsOf(view, list)) {
    const bool is_repeated = ++seen[station.name] > 1;
    const auto kept = std::ranges::find(now, AddressIn(station.mac));
    if (kept != now.end() && station.IsMeant()) {
      now.erase(kept);
      if (station.enable != "yes") {
        findings.Add({kReadByLuck, BaseName(list) + ": " + station.name + " enable=" + *station.enable, {}});
      }
      continue;
    }
    const Cause cause = CauseInFile(view, list, station.has_carriage_return);
    const std::string detail = BaseName(list) + ": " + WhyLeftOut(station, is_repeated);
    if (!station.enable) {
      findings.Add({"setting-not-stored",
                    BaseName(list) + ": " + station.name + " enable is not stored; now left out", cause});
    } else {
      const bool is_lost = is_used && station.IsMeant();
      findings.Add({is_lost ? "filter-entry-left-out" : "filter-entry-dropped", detail, cause});
    }
  }
}

}  // namespace

Observations ObserveFilter(const RunView& view, const NetworkView& network) {
  Observations observations = ObservePolicy(view, network);
  if (WasOn(view, network)) return observations;
  std::erase_if(observations, [](const Observation& found) { return found.id == "setting-not-stored"; });
  for (Observation& found : observations) {
    if (found.id != kReadByLuck) found.id = kOffNetworkDamaged;
  }
  return observations;
}

void CheckFilterLists(const RunView& view, FindingCollector& findings) {
  if (view.Document("misc.json") == nullptr) return;
  CheckList(view, kDenyList, kDeny, IsUsed(view, "deny"), findings);
  CheckList(view, kAllowList, kAllow, IsUsed(view, "allow"), findings);
}

}  // namespace lab
