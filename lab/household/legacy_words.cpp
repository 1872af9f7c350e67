#include "lab/household/legacy_words.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <system_error>

#include "lab/text/ascii.h"

namespace lab {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

}  // namespace

std::string_view TrimStart(std::string_view word) {
  return word.substr(std::min(word.find_first_not_of(kBlanks), word.size()));
}

std::string_view TrimBlanks(std::string_view word) {
  word = TrimStart(word);
  return word.substr(0, word.find_last_not_of(kBlanks) + 1);
}

std::string NormalizeValue(std::string_view word) {
  return ToLowerAscii(TrimBlanks(word));
}

bool IsExactNumber(std::string_view word, int number) {
  word = TrimStart(word);
  if (word.empty()) return true;
  if (word.starts_with('+') && !word.starts_with("+-")) word.remove_prefix(1);
  int read = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), read);
  word.remove_prefix(static_cast<std::size_t>(end - word.data()));
  return error == std::errc() && TrimStart(word).empty() && read == number;
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
