#include "tests/end_to_end/varied_device.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "lab/text/key_value.h"
#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

constexpr std::array kValues{"",
                             "yes",
                             "no",
                             "YES",
                             "0",
                             "1",
                             "-1",
                             "64 clients",
                             " 36",
                             "auto",
                             "2147483647",
                             "-2147483648",
                             "2147483648",
                             "disabled",
                             "capable",
                             "required",
                             "OWE",
                             "WEP",
                             "PERSONAL_WPA",
                             "PERSONAL_WPA2",
                             "PERSONAL_WPA3",
                             "PERSONAL_WPA_MIXED",
                             "PERSONAL_WPA2_WPA3_MIXED",
                             "ENTERPRISE_WPA",
                             "ENTERPRISE_WPA2",
                             "ENTERPRISE_WPA3",
                             "ENTERPRISE_WPA_MIXED",
                             "n",
                             "bgn",
                             "ac",
                             "an+ac",
                             "low",
                             "medium",
                             "high",
                             "20MHZ",
                             "20_40MHZ",
                             "20_40_80MHZ",
                             "20_40_80_160MHZ",
                             "80_80MHZ",
                             "allow",
                             "deny",
                             "router",
                             "bridge",
                             "mr",
                             "re",
                             "MaxCountryCode",
                             "ZW",
                             "2023/7/4",
                             "-5/-13/99",
                             "2147483647/-2147483648/0",
                             "a@example.net,,b@example.net",
                             "SG9tZQ==",
                             "/wD/",
                             "gEFC",
                             "5a2X"};
constexpr std::array kModels{"Error", "ORCHID", "LOTUS", "MAPLE", "CEDAR"};
constexpr std::array kCountries{"AD", "DE", "US", "ZW", "MaxCountryCode"};

class Dice {
 public:
  explicit Dice(std::mt19937& engine) : engine_(engine) {}

  // The library's distributions differ between machines.
  unsigned Below(std::size_t end) { return static_cast<unsigned>(engine_() % end); }
  bool OneIn(unsigned count) { return Below(count) == 0; }
  template <typename Choices>
  std::string OneOf(const Choices& choices) {
    return choices.at(Below(choices.size()));
  }

  std::string Bytes() {
    std::string bytes;
    for (unsigned left = Below(40); left > 0; --left) {
      const char byte = static_cast<char>(Below(256));
      if (byte != '\n' && byte != '\0') bytes += byte;
    }
    return bytes;
  }

 private:
  std::mt19937& engine_;
};

std::string MACText(Dice& dice) {
  std::string text;
  for (int i = 0; i < 6; ++i) {
    if (i > 0) text += ':';
    text += "0123456789abcdefABCDEF"[dice.Below(22)];
    text += "0123456789abcdefABCDEF"[dice.Below(22)];
  }
  return text;
}

std::string VariedText(std::string text, Dice& dice) {
  std::vector<lab::LegacyEntry> entries = lab::ParseKeyValueText(text);
  std::ranges::reverse(entries);
  // From the end, as a line that is dropped moves those after it.
  for (const lab::LegacyEntry& entry : entries) {
    const std::string& key = entry.key;
    // What decides whether there is a migration at all, and of which radios.
    if (key == "wps_pin" || key == "kelpbios" || key == "mesh_network_role") continue;
    if (key == "mac") {
      text = WithValue(text, entry, MACText(dice));
    } else if (key != "enable" && !dice.OneIn(3)) {
      text = dice.OneIn(8) ? WithoutEntry(text, entry)
                           : WithValue(text, entry, dice.OneIn(6) ? dice.Bytes() : dice.OneOf(kValues));
    }
  }
  return text;
}

std::string ModelsText(Dice& dice) {
  std::string models;
  for (unsigned left = dice.Below(6); left > 0; --left) {
    models += (models.empty() ? "\"" : ", \"") + dice.OneOf(kModels) + "\"";
  }
  return R"({"connected_models": [)" + models + "]}";
}

}  // namespace

void Vary(lab::PrivateRoot& device, std::mt19937& engine) {
  Dice dice(engine);
  for (const auto& [path, entry] : device.Snapshot()) {
    const bool is_settings =
        path == kInformation || path.starts_with(kWifi + "wifi_") || path.starts_with(kFilters);
    if (entry.kind != lab::Entry::Kind::File) continue;
    if (is_settings) device.Write(path, VariedText(entry.content, dice), entry.mode);
    if (path == kWifi + "model.json") device.Write(path, ModelsText(dice), entry.mode);
    if (path == kWifi + "country.json")
      device.Write(path, R"({"country_code": ")" + dice.OneOf(kCountries) + "\"}", entry.mode);
  }
}

}  // namespace end_to_end
