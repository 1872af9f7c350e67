#include <algorithm>
#include <string>
#include <vector>

#include "lab/household/rules.h"

namespace lab {

void CheckRadios(const RunView& view, FindingCollector& findings) {
  const bool is_smart = IsSmartConnectOn(view);
  const Json::Value* const wps = view.Document("wps.json");
  const std::vector<std::string> read = WPSFiles(view);
  for (const RadioView& radio : view.Radios()) {
    if (!view.HadEntries(radio.file) || wps == nullptr) continue;
    const StoredValue own = view.Stored(radio.file, "ap_enable_wps");
    const bool was_on = own.is_key_exact && own.value == "yes";
    if (is_smart && was_on != FlagIn(*wps, "enabled")) {
      findings.Add("smart-connect-decides",
                   own.Detail() + ", all bands ap_enable_wps=" +
                       view.LegacyValue(kAllBandsFile, "ap_enable_wps").value_or(""));
    }
    // Where the radios decide, the first that has WPS on gets it, and no other.
    const bool is_read = std::ranges::find(read, radio.file) != read.end();
    if (!is_smart && !is_read && was_on) findings.Add("wps-on-one-band", own.Detail());
  }
}

}  // namespace lab
