#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/places.h"
#include "lab/household/rules.h"
#include "lab/household/settings.h"

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

void FindUnknown(const RunView& view, const std::string& file, const Word& word, FindingCollector& findings) {
  if (!view.Had(file)) return;
  if (view.Logged(word.message, view.Was(file, word.key).value_or(""))) {
    findings.Add(word.finding, ToldOf(view, file, word.key));
  }
}

/// The settings of a radio for which the all-bands file decides otherwise than its own word did.
void FindTakenFrom(const RunView& view, const RadioView& radio, FindingCollector& findings) {
  const auto told = [&](const char* key) {
    findings.Add("smart-connect-decides", ToldOf(view, radio.file, key) + ", all bands " + key + "=" +
                                              view.Was(kAllBandsFile, key).value_or(""));
  };
  for (const Setting& setting : SettingsOf(view, radio)) {
    if (setting.decided_elsewhere) told(setting.key.c_str());
  }
  const Json::Value* const wps = view.Document("wps.json");
  const bool was_on = view.Was(radio.file, "ap_enable_wps") == "yes";
  if (wps != nullptr && was_on != FlagIn(*wps, "enabled")) told("ap_enable_wps");
}

/// Where the radios decide, the first that has WPS on gets it, and no other.
void FindWPS(const RunView& view, FindingCollector& findings) {
  const std::vector<std::string> read = WPSFiles(view);
  for (const RadioView& radio : view.Radios()) {
    const bool is_read = std::ranges::find(read, radio.file) != read.end();
    if (!is_read && view.Was(radio.file, "ap_enable_wps") == "yes") {
      findings.Add("wps-on-one-band", ToldOf(view, radio.file, "ap_enable_wps"));
    }
  }
}

}  // namespace

void CheckRadios(const RunView& view, FindingCollector& findings) {
  const bool is_smart = IsSmartConnectOn(view);
  for (const RadioView& radio : view.Radios()) {
    if (!view.HadEntries(radio.file)) continue;
    const bool is_forced = radio.frequency == kBand2_4GHz && view.Was(radio.file, "force_24g_40mhz") == "yes";
    if (!is_forced) FindUnknown(view, radio.file, kBandwidth, findings);
    FindUnknown(view, radio.file, kMode, findings);
    if (is_smart) {
      FindTakenFrom(view, radio, findings);
    } else {
      FindUnknown(view, radio.file, kPower, findings);
    }
  }
  if (is_smart) {
    FindUnknown(view, kAllBandsFile, kPower, findings);
  } else {
    FindWPS(view, findings);
  }
}

}  // namespace lab
