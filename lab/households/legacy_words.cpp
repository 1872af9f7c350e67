#include "lab/households/legacy_words.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace lab {

std::string PlainWord(std::string_view word) {
  constexpr std::string_view kBlanks = " \t\r\n\v\f";
  word.remove_prefix(std::min(word.find_first_not_of(kBlanks), word.size()));
  std::string plain(word.substr(0, word.find_last_not_of(kBlanks) + 1));
  std::ranges::transform(plain, plain.begin(), [](unsigned char byte) { return std::tolower(byte); });
  return plain;
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
