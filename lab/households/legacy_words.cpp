#include "lab/households/legacy_words.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace lab {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

}  // namespace

std::string_view SkipBlanks(std::string_view word) {
  return word.substr(std::min(word.find_first_not_of(kBlanks), word.size()));
}

std::string InLowerCase(std::string_view word) {
  std::string lower(word);
  std::ranges::transform(lower, lower.begin(), [](unsigned char byte) { return std::tolower(byte); });
  return lower;
}

std::string PlainWord(std::string_view word) {
  word = SkipBlanks(word);
  return InLowerCase(word.substr(0, word.find_last_not_of(kBlanks) + 1));
}

bool SaysOff(std::string_view word) {
  static const std::set<std::string, std::less<>> kOff{"", "no", "off", "false", "0", "disabled", "none"};
  return kOff.contains(PlainWord(word));
}

bool SaysOn(std::string_view word) {
  static const std::set<std::string, std::less<>> kOn{"yes", "on", "true", "1", "enabled"};
  return kOn.contains(PlainWord(word));
}

bool IsLostFlag(const std::optional<std::string>& word) {
  return word && word != "yes" && !SaysOff(*word);
}

bool IsLostRefusal(const std::optional<std::string>& word) {
  return word && !word->empty() && word != "no" && !SaysOn(*word);
}

}  // namespace lab
