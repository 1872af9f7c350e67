#include <algorithm>
#include <string>

#include "lab/household/legacy_words.h"
#include "lab/household/rules.h"
#include "legacy/vocabularies.h"

namespace lab {
namespace {

constexpr int kOWE = 1;
constexpr int kWPA3 = 5;
constexpr int kEnterpriseWPA3 = 10;
constexpr int kPMFOff = 0;

bool IsWPA3(int security) {
  return security == kWPA3 || security == kEnterpriseWPA3;
}

bool Has(const std::string& word, const char* part) {
  return word.find(part) != std::string::npos;
}

/// A network on one radio, which is on or was.
struct Place {
  const RunView& view;
  const NetworkView& network;
  const HouseholdSettings::Radio& radio;

  int Now(const char* member) const { return NumberIn(*radio.view->now, member, 0); }
  StoredValue Stored(const char* key) const { return view.Stored(radio.view->file, network.Key(key)); }
  /// What follows from a value that was lost has the same cause, or the loss itself for one.
  Cause CauseOf(const char* member) const {
    const Setting* const setting = FindSetting(radio.settings, member);
    if (setting == nullptr || !setting->IsLost()) return {};
    const Observation& lost = setting->observations.front();
    if (lost.id == "setting-not-stored") return {};
    return lost.cause == Cause{} ? Cause{lost.id} : lost.cause;
  }
};

void CheckWPA3(const Place& place, FindingCollector& findings) {
  const StoredValue security = place.Stored("security");
  const std::string word = NormalizeValue(security.Word());
  const bool was_wpa3 = Has(word, "wpa3") && !Has(word, "wpa2");
  if (!was_wpa3 || IsWPA3(place.Now("security"))) return;
  findings.Add({"wpa3-weakened", security.Detail(), place.CauseOf("security")});
}

void CheckPMFForWPA3(const Place& place, FindingCollector& findings) {
  const int security = place.Now("security");
  const bool needs_pmf = IsWPA3(security) || security == kOWE;
  if (!needs_pmf || place.Now("pmf_mode") != kPMFOff || !FlagIn(*place.radio.view->now, "enabled")) return;
  findings.Add({"pmf-missing-for-wpa3", place.Stored("security").Detail(), place.CauseOf("pmf_mode")});
}

/// How much protection a word asked for; nothing for a word that is not known.
int WantedPMF(const StoredValue& stored) {
  for (const auto& known : KELP::Wifi::Updater::kPMFVocabulary.words) {
    if (known.word == NormalizeValue(stored.Word())) return known.value;
  }
  return kPMFOff;
}

/// The guest network has a key of its own that is not read.
void CheckGuestPMF(const Place& place, FindingCollector& findings) {
  const StoredValue own = place.view.Stored(place.radio.view->file, "guest_pmf_mode");
  if (!place.network.is_guest || place.Now("pmf_mode") >= WantedPMF(own)) return;
  const StoredValue primary = place.Stored("pmf_mode");
  findings.Add({"guest-pmf-weaker", own.Detail() + ", and " + primary.key + "=" + primary.value.value_or(""),
                place.CauseOf("pmf_mode")});
}

}  // namespace

void CheckProtection(const RunView& view, const HouseholdSettings& settings, FindingCollector& findings) {
  for (const auto& network : settings.networks) {
    for (const auto& radio : network.radios) {
      if (!radio.was_on) continue;
      const Place place{view, *network.view, radio};
      CheckWPA3(place, findings);
      CheckPMFForWPA3(place, findings);
      CheckGuestPMF(place, findings);
    }
  }
}

}  // namespace lab
