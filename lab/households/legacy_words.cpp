#include "lab/households/legacy_words.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "lab/text/ascii.h"

namespace lab {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

}  // namespace

bool IsReadWhole(std::string_view word, int number) {
  word = SkipBlanks(word);
  if (word.empty()) return true;
  if (word.starts_with('+') && !word.starts_with("+-")) word.remove_prefix(1);
  int read = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), read);
  word.remove_prefix(static_cast<std::size_t>(end - word.data()));
  return error == std::errc() && SkipBlanks(word).empty() && read == number;
}

std::string_view SkipBlanks(std::string_view word) {
  return word.substr(std::min(word.find_first_not_of(kBlanks), word.size()));
}

std::string PlainWord(std::string_view word) {
  word = SkipBlanks(word);
  return ToLowerAscii(word.substr(0, word.find_last_not_of(kBlanks) + 1));
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
