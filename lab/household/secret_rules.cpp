#include <sodium.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "lab/household/legacy_words.h"
#include "lab/household/rules.h"
#include "lab/text/base64.h"

namespace lab {
namespace {

constexpr std::size_t kHexDigitsOfKey = 64;

/// A longer text is not a password that somebody entered, but an encrypted one that is damaged.
constexpr std::size_t kLongestPassword = 64;

/// How many secrets a wrong key must have lost to be blamed for them.
constexpr std::ptrdiff_t kLeastLost = 2;

bool AreHexDigits(std::string_view text) {
  return text.size() == kHexDigitsOfKey &&
         std::ranges::all_of(text, [](unsigned char byte) { return std::isxdigit(byte) != 0; });
}

/// Whether a text is an encrypted secret by its form.
bool LooksEncrypted(const std::string& stored) {
  // A key of 64 hexadecimal digits is base64 as well.
  if (AreHexDigits(stored)) return false;
  const auto bytes = FromBase64(stored);
  return bytes && bytes->size() >= crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
}

/// Whether the setting is an encrypted secret that could not be opened, for no reason of its own.
bool IsLostSecret(const Setting& password) {
  return password.IsLost() && password.observations.front().cause == Cause{} &&
         LooksEncrypted(std::string(TrimBlanks(password.was.value_or(""))));
}

/// The secrets of all networks on all radios.
std::vector<Setting*> Passwords(HouseholdSettings& settings) {
  std::vector<Setting*> passwords;
  for (auto& network : settings.networks) {
    for (auto& radio : network.radios) {
      for (Setting& setting : radio.settings) {
        if (setting.member == "password") passwords.push_back(&setting);
      }
    }
  }
  return passwords;
}

/// Why the key opens nothing; empty if it does.
std::string KeyProblem(const RunView& view, std::ptrdiff_t lost, bool any_kept) {
  std::string_view key = view.TextOf(kSecretKeyFile);
  if (key.ends_with('\n')) key.remove_suffix(1);
  if (!view.Had(kSecretKeyFile)) return "secret.key is missing";
  if (!AreHexDigits(key)) return "secret.key is no key of 64 hexadecimal digits";
  return !any_kept && lost >= kLeastLost ? "secret.key opens none of the secrets" : "";
}

void CheckUnencrypted(const RunView& view, const NetworkView& network, const RadioView& radio,
                      FindingCollector& findings) {
  for (const char* key : {"password", "auth_server_shared_secret"}) {
    const StoredValue stored = view.Stored(radio.file, network.Key(key));
    const std::string word = stored.Word();
    if (word.empty() || LooksEncrypted(word) || word.size() > kLongestPassword) continue;
    findings.Add("secret-unsealed", stored.DetailWithoutValue());
  }
}

}  // namespace

void BlameSecretKey(const RunView& view, HouseholdSettings& settings) {
  const std::vector<Setting*> passwords = Passwords(settings);
  const auto lost = std::ranges::count_if(passwords, [](const Setting* one) { return IsLostSecret(*one); });
  if (lost == 0) return;
  const bool any_kept = std::ranges::any_of(passwords, [](const Setting* password) {
    return password->now.isString() && !password->now.asString().empty();
  });
  settings.secret_key_problem = KeyProblem(view, lost, any_kept);
  if (settings.secret_key_problem.empty()) return;
  for (Setting* const password : passwords) {
    if (IsLostSecret(*password)) password->observations.front().cause = {"secret-key-unusable"};
  }
}

void CheckSecrets(const RunView& view, const HouseholdSettings& settings, FindingCollector& findings) {
  if (!settings.secret_key_problem.empty()) {
    findings.AddCause({"secret-key-unusable"}, settings.secret_key_problem);
  }
  for (const NetworkView& network : view.Networks()) {
    for (const RadioView& radio : network.radios) CheckUnencrypted(view, network, radio, findings);
  }
}

}  // namespace lab
