#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"
#include "lab/households/settings.h"

namespace lab {
namespace {

/// A radio's word that the program logs when it does not know it.
struct Word {
  int message;
  std::string_view finding;
  const char* key;
};

constexpr Word kBandwidth{838, "bandwidth-unknown", "bandwidth"};
constexpr Word kMode{795, "mode-unknown", "mode"};
constexpr Word kPower{811, "power-unknown", "tx_power"};

constexpr int kBand2_4GHz = 1;

void FindUnknown(const Rehearsal& rehearsal, const std::string& file, const Word& word, Findings& findings) {
  if (!rehearsal.Had(file)) return;
  if (rehearsal.Logged(word.message, rehearsal.Was(file, word.key).value_or(""))) {
    findings.Add(word.finding, ToldOf(rehearsal, file, word.key));
  }
}

/// The settings of a radio for which the all-bands file decides otherwise than its own word did.
void FindTakenFrom(const Rehearsal& rehearsal, const RadioPart& radio, Findings& findings) {
  const auto told = [&](const char* key) {
    findings.Add("smart-connect-decides", ToldOf(rehearsal, radio.file, key) + ", all bands " + key + "=" +
                                              rehearsal.Was(kAllBandsFile, key).value_or(""));
  };
  for (const Setting& setting : SettingsOf(rehearsal, radio)) {
    if (setting.decided_elsewhere) told(setting.key.c_str());
  }
  const Json::Value* const wps = rehearsal.Document("wps.json");
  const bool was_on = rehearsal.Was(radio.file, "ap_enable_wps") == "yes";
  if (wps != nullptr && was_on != FlagIn(*wps, "enabled")) told("ap_enable_wps");
}

/// Where the radios decide, the first that has WPS on gets it, and no other.
void FindWPS(const Rehearsal& rehearsal, Findings& findings) {
  const std::vector<std::string> read = WPSFiles(rehearsal);
  for (const RadioPart& radio : rehearsal.Radios()) {
    const bool is_read = std::ranges::find(read, radio.file) != read.end();
    if (!is_read && rehearsal.Was(radio.file, "ap_enable_wps") == "yes") {
      findings.Add("wps-on-one-band", ToldOf(rehearsal, radio.file, "ap_enable_wps"));
    }
  }
}

}  // namespace

void FindAboutRadios(const Rehearsal& rehearsal, Findings& findings) {
  const bool is_smart = IsSmartConnectOn(rehearsal);
  for (const RadioPart& radio : rehearsal.Radios()) {
    if (!rehearsal.HadEntries(radio.file)) continue;
    const bool is_forced =
        radio.frequency == kBand2_4GHz && rehearsal.Was(radio.file, "force_24g_40mhz") == "yes";
    if (!is_forced) FindUnknown(rehearsal, radio.file, kBandwidth, findings);
    FindUnknown(rehearsal, radio.file, kMode, findings);
    if (is_smart) {
      FindTakenFrom(rehearsal, radio, findings);
    } else {
      FindUnknown(rehearsal, radio.file, kPower, findings);
    }
  }
  if (is_smart) {
    FindUnknown(rehearsal, kAllBandsFile, kPower, findings);
  } else {
    FindWPS(rehearsal, findings);
  }
}

}  // namespace lab
