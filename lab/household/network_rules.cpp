#include <string>

#include "lab/household/legacy_words.h"
#include "lab/household/places.h"
#include "lab/household/rules.h"
#include "lab/household/stored_name.h"

namespace lab {
namespace {

/// Whether the network takes its name from here: with smart connect all bands have one, otherwise each radio
/// has its own.
bool Counts(const Place& place) {
  const bool is_all_bands = place.radio.frequency == 0;
  return is_all_bands == FlagIn(*place.network.now, "smartConnect");
}

void FindName(const Place& place, FindingCollector& findings) {
  const std::string stored = place.Was("ssid").value_or("");
  const std::string now = TextIn(*place.radio.now, "ssid");
  if (stored.empty()) {
    if (place.WasOn() && Counts(place)) {
      findings.Add("ssid-lost", place.ToldWithoutWord("ssid") + " is empty or missing");
    }
  } else if (now.empty()) {
    findings.Add("ssid-lost", place.Told("ssid"));
  } else if (IsNameCut(stored, now)) {
    findings.Add("ssid-cut", place.ToldWithoutWord("ssid"));
  }
}

}  // namespace

void CheckNetworks(const RunView& view, FindingCollector& findings) {
  ForEachNetworkOnRadio(view, findings, [&](const Place& place) {
    FindName(place, findings);
    if (MaybeMeantYes(place.Was("enabled"))) findings.Add("network-switched-off", place.Told("enabled"));
  });
}

}  // namespace lab
