#include <sodium.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/places.h"
#include "lab/household/rules.h"

namespace lab {
namespace {

constexpr int kCannotOpenSecret = 589;
constexpr int kOpen = 0;
constexpr int kOWE = 1;
constexpr int kFirstEnterprise = 8;
constexpr int kLastEnterprise = 11;

constexpr std::size_t kHexDigitsOfKey = 64;

bool NeedsSecret(int security) {
  return security != kOpen && security != kOWE;
}

std::string_view SecretKeyOf(int security) {
  const bool is_enterprise = security >= kFirstEnterprise && security <= kLastEnterprise;
  return is_enterprise ? "auth_server_shared_secret" : "password";
}

bool AreHexDigits(std::string_view text) {
  return text.size() == kHexDigitsOfKey &&
         std::ranges::all_of(text, [](unsigned char byte) { return std::isxdigit(byte) != 0; });
}

/// A longer text is no password that somebody entered, but a sealed one that is damaged.
constexpr std::size_t kLongestPassword = 64;

std::string WithoutLineEnd(std::string text) {
  while (text.ends_with('\r') || text.ends_with(' ')) text.pop_back();
  return text;
}

/// Whether the text could be a sealed one by its form. A key of 64 hexadecimal digits is base64 as well.
bool LooksSealed(const std::string& stored) {
  const auto is_high = [](unsigned char byte) { return byte > 0x7F; };
  // The decoder of an older release of the library takes high bytes for digits.
  if (AreHexDigits(stored) || std::ranges::any_of(stored, is_high)) return false;
  std::vector<unsigned char> bytes(stored.size());
  std::size_t size = 0;
  const int result = sodium_base642bin(bytes.data(), bytes.size(), stored.data(), stored.size(), nullptr,
                                       &size, nullptr, sodium_base64_VARIANT_ORIGINAL);
  return result == 0 && size >= crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
}

/// What was found of the secrets that the networks need.
struct Opened {
  int lost = 0;
  int kept = 0;
};

void FindPassword(const Place& place, FindingCollector& findings, Opened& opened) {
  const Json::Value& now = *place.radio.now;
  const int security = NumberIn(now, "security", kOpen);
  const std::string_view key = SecretKeyOf(security);
  const std::string stored = place.Was(key).value_or("");
  const bool has_secret = !TextIn(now, "password").empty();
  if (has_secret) ++opened.kept;
  if (has_secret || !NeedsSecret(security)) return;
  if (!stored.empty() && LooksSealed(stored)) ++opened.lost;
  if (!stored.empty() || FlagIn(now, "enabled")) {
    findings.Add("password-lost",
                 place.ToldWithoutWord(key) + (stored.empty() ? " is empty or missing" : ""));
  }
}

void FindUnsealed(const Place& place, FindingCollector& findings) {
  for (const char* key : {"password", "auth_server_shared_secret"}) {
    const std::string stored = WithoutLineEnd(place.Was(key).value_or(""));
    const bool is_plain = !LooksSealed(stored) && stored.size() <= kLongestPassword;
    if (!stored.empty() && is_plain) findings.Add("secret-unsealed", place.ToldWithoutWord(key));
  }
}

void FindKey(const RunView& view, const Opened& opened, FindingCollector& findings) {
  if (opened.lost == 0 || !view.Logged(kCannotOpenSecret)) return;
  std::string_view key = view.TextOf(kSecretKeyFile);
  if (key.ends_with('\n')) key.remove_suffix(1);
  if (!view.Had(kSecretKeyFile)) {
    findings.Add("secret-key-unusable", "secret.key is missing");
  } else if (!AreHexDigits(key)) {
    findings.Add("secret-key-unusable", "secret.key is no key of 64 hexadecimal digits");
  } else if (opened.kept == 0 && opened.lost > 1) {
    findings.Add("secret-key-unusable", "secret.key opens none of the secrets");
  }
}

void FindPin(const RunView& view, FindingCollector& findings) {
  const Json::Value* const wps = view.Document("wps.json");
  if (wps == nullptr || !FlagIn(*wps, "pin_enabled")) return;
  const std::optional<std::string> stored = view.Was(kWPSFile, "wps_ap_pin");
  if (!stored)
    findings.Add("wps-pin-changed", "wifi_wps: wps_ap_pin is missing; the device's own PIN counts");
  if (stored && stored->empty())
    findings.Add("wps-pin-changed", "wifi_wps: wps_ap_pin is empty; no PIN counts");
}

}  // namespace

void CheckSecrets(const RunView& view, FindingCollector& findings) {
  Opened opened;
  ForEachNetworkOnRadio(view, findings, [&](const Place& place) {
    FindPassword(place, findings, opened);
    FindUnsealed(place, findings);
  });
  FindKey(view, opened, findings);
  FindPin(view, findings);
}

}  // namespace lab
