#include "lab/household/legacy_words.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace lab {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

}  // namespace

std::string_view TrimStart(std::string_view word) {
  return word.substr(std::min(word.find_first_not_of(kBlanks), word.size()));
}

std::string ToLowerAscii(std::string_view word) {
  std::string lower(word);
  std::ranges::transform(lower, lower.begin(), [](unsigned char byte) { return std::tolower(byte); });
  return lower;
}

std::string_view TrimBlanks(std::string_view word) {
  word = TrimStart(word);
  return word.substr(0, word.find_last_not_of(kBlanks) + 1);
}

std::string NormalizeValue(std::string_view word) {
  return ToLowerAscii(TrimBlanks(word));
}

bool LooksOff(std::string_view word) {
  static const std::set<std::string, std::less<>> kOff{"", "no", "off", "false", "0", "disabled", "none"};
  return kOff.contains(NormalizeValue(word));
}

bool LooksOn(std::string_view word) {
  static const std::set<std::string, std::less<>> kOn{"yes", "on", "true", "1", "enabled"};
  return kOn.contains(NormalizeValue(word));
}

}  // namespace lab
