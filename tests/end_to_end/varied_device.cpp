#include "tests/end_to_end/varied_device.h"

#include <array>
#include <sstream>
#include <string>
#include <string_view>

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

/// A line "key=value" with another value, or none.
std::string VariedLine(const std::string& line, Dice& dice) {
  const std::size_t end_of_key = line.find('=');
  const std::string key = line.substr(0, end_of_key);
  // What decides whether there is a migration at all, and of which radios.
  const bool is_fixed = key == "wps_pin" || key == "kelpbios" || key == "mesh_network_role";
  if (end_of_key == std::string::npos || is_fixed) return line + "\n";
  if (key == "mac") return "mac=" + MACText(dice) + "\n";
  if (key == "enable" || dice.OneIn(3)) return line + "\n";
  if (dice.OneIn(8)) return "";
  return key + "=" + (dice.OneIn(6) ? dice.Bytes() : dice.OneOf(kValues)) + "\n";
}

std::string VariedText(const std::string& text, Dice& dice) {
  std::istringstream lines(text);
  std::string varied;
  for (std::string line; std::getline(lines, line);) varied += VariedLine(line, dice);
  return varied;
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
