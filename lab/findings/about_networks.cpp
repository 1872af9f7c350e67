#include <string>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"

namespace lab {
namespace {

/// How many bytes a base64 text of that length stands for.
std::size_t DecodedSize(const std::string& base64) {
  std::size_t padding = 0;
  while (padding < 2 && padding < base64.size() && base64[base64.size() - 1 - padding] == '=') ++padding;
  return base64.size() / 4 * 3 - padding;
}

void FindName(const Place& place, Findings& findings) {
  const std::string stored = place.Was("ssid").value_or("");
  const std::string now = TextIn(*place.radio.now, "ssid");
  if (stored.empty()) return;
  if (now.empty()) {
    findings.Add("ssid-lost", place.Told("ssid"));
  } else if (now.size() < DecodedSize(stored)) {
    findings.Add("ssid-cut", place.ToldWithoutWord("ssid"));
  }
}

}  // namespace

void FindAboutNetworks(const Rehearsal& rehearsal, Findings& findings) {
  ForEachPlace(rehearsal, [&](const Place& place) {
    FindName(place, findings);
    if (IsUnclearFlag(place.Was("enabled"))) findings.Add("network-switched-off", place.Told("enabled"));
  });
}

}  // namespace lab
