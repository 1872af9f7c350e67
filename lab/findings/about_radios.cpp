#include <string>
#include <string_view>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"

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

/// The all-bands file where the primary network's smart connect makes it decide; otherwise empty.
std::string DecidingFile(const Rehearsal& rehearsal) {
  for (const NetworkPart& network : rehearsal.Networks()) {
    if (network.is_guest || !FlagIn(*network.now, "smartConnect")) continue;
    return network.radios.front().file;
  }
  return "";
}

void FindUnknown(const Rehearsal& rehearsal, const std::string& file, const Word& word, Findings& findings) {
  if (!rehearsal.Had(file)) return;
  if (rehearsal.Logged(word.message, rehearsal.Was(file, word.key).value_or(""))) {
    findings.Add(word.finding, ToldOf(rehearsal, file, word.key));
  }
}

/// Whether a radio's own word and the all-bands file's are not the same.
void FindTakenFrom(const Rehearsal& rehearsal, const std::string& file, const std::string& deciding,
                   Findings& findings) {
  for (const char* key : {"tx_power", "allow_dfs_channels", "ap_enable_wps"}) {
    const std::string own = rehearsal.Was(file, key).value_or("");
    const std::string all_bands = rehearsal.Was(deciding, key).value_or("");
    const bool is_flag = std::string_view(key) != "tx_power";
    const bool differs = is_flag ? (own == "yes") != (all_bands == "yes") : own != all_bands;
    if (differs) {
      findings.Add("smart-connect-decides",
                   ToldOf(rehearsal, file, key) + ", all bands " + key + "=" + all_bands);
    }
  }
}

}  // namespace

void FindAboutRadios(const Rehearsal& rehearsal, Findings& findings) {
  const std::string deciding = DecidingFile(rehearsal);
  for (const RadioPart& radio : rehearsal.Radios()) {
    if (!rehearsal.Had(radio.file)) continue;
    const bool is_forced =
        radio.frequency == kBand2_4GHz && rehearsal.Was(radio.file, "force_24g_40mhz") == "yes";
    if (!is_forced) FindUnknown(rehearsal, radio.file, kBandwidth, findings);
    FindUnknown(rehearsal, radio.file, kMode, findings);
    if (deciding.empty()) {
      FindUnknown(rehearsal, radio.file, kPower, findings);
    } else {
      FindTakenFrom(rehearsal, radio.file, deciding, findings);
    }
  }
  if (!deciding.empty()) FindUnknown(rehearsal, deciding, kPower, findings);
}

}  // namespace lab
