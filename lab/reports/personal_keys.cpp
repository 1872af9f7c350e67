#include "lab/reports/personal_keys.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <string>

#include "lab/household/legacy_words.h"

namespace lab {
namespace {

bool IsOfWords(unsigned char byte) {
  return std::isalnum(byte) != 0 || byte > 0x7F;
}

/// In lower case, without what stands around the name.
std::string NameIn(std::string_view key) {
  while (!key.empty() && !IsOfWords(static_cast<unsigned char>(key.front()))) key.remove_prefix(1);
  while (!key.empty() && !IsOfWords(static_cast<unsigned char>(key.back()))) key.remove_suffix(1);
  return ToLowerAscii(key);
}

bool HasAny(std::string_view name, std::initializer_list<std::string_view> parts) {
  return std::ranges::any_of(
      parts, [&](std::string_view part) { return name.find(part) != std::string_view::npos; });
}

bool EndsInAny(std::string_view name, std::initializer_list<std::string_view> ends) {
  return std::ranges::any_of(ends, [&](std::string_view end) { return name.ends_with(end); });
}

}  // namespace

bool IsSecretKey(std::string_view key) {
  std::string name = NameIn(key);
  if (name == "guestpasswordrotation") return false;  // a schedule
  if (HasAny(name, {"password", "passphrase", "passwd", "secret", "psk", "credential"})) return true;
  // "wl0_key1" and its like: each WEP key has a number.
  while (!name.empty() && std::isdigit(static_cast<unsigned char>(name.back())) != 0) name.pop_back();
  return name == "pwd" || name == "pass" || EndsInAny(name, {"pin", "key", "_pwd", "_pass", "token"});
}

bool IsSsidKey(std::string_view key) {
  const std::string name = NameIn(key);
  return name.ends_with("ssid") && !name.ends_with("bssid") &&
         !HasAny(name, {"display", "hide", "broadcast"});
}

bool IsStoredSsidKey(std::string_view key) {
  const std::string name = NameIn(key);
  return name == "ssid" || name == "guest_ssid";
}

bool IsNameKey(std::string_view key) {
  const std::string name = NameIn(key);
  return EndsInAny(name, {"desc", "description", "name", "alias", "owner", "serial"});
}

bool IsMacKey(std::string_view key) {
  const std::string name = NameIn(key);
  return name == "mac" || EndsInAny(name, {"_mac", "macaddr", "bssid"});
}

bool IsMailKey(std::string_view key) {
  return HasAny(NameIn(key), {"mail"});
}

}  // namespace lab
