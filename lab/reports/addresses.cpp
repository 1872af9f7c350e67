#include "lab/reports/addresses.h"

#include <cctype>

#include "lab/household/legacy_words.h"

namespace lab {
namespace {

constexpr std::size_t kDigits = 12;
constexpr std::size_t kLongestMail = 512;

bool IsHexDigit(char byte) {
  return std::isxdigit(static_cast<unsigned char>(byte)) != 0;
}

bool IsOfAWord(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0;
}

/// Twelve digits with one of `separators` between each `group` of them; "" for none at all.
std::optional<Address> DigitsAt(std::string_view text, std::size_t group, std::string_view separators) {
  Address address;
  for (std::size_t digit = 0; digit < kDigits; ++digit) {
    const bool is_behind_group = digit > 0 && digit % group == 0;
    if (is_behind_group && !separators.empty()) {
      if (address.size >= text.size() || separators.find(text[address.size]) == std::string_view::npos)
        return std::nullopt;
      ++address.size;
    }
    if (address.size >= text.size() || !IsHexDigit(text[address.size])) return std::nullopt;
    if (digit > 0 && digit % 2 == 0) address.common += ':';
    address.common += text[address.size];
    ++address.size;
  }
  address.common = ToLowerAscii(address.common);
  return address;
}

/// What no mail address has in it.
bool IsBreak(char byte) {
  constexpr std::string_view kBreaks = ",;:=\"<>()[]{}|/\x7f";
  return static_cast<unsigned char>(byte) <= ' ' || kBreaks.find(byte) != std::string_view::npos;
}

}  // namespace

std::optional<Address> MacAt(std::string_view text, std::size_t place) {
  const bool is_in_a_word = place > 0 && IsOfAWord(text[place - 1]);
  const std::string_view rest = text.substr(place);
  if (rest.empty() || !IsHexDigit(rest.front())) return std::nullopt;
  if (auto pairs = DigitsAt(rest, 2, ":-")) return pairs;
  auto alone = DigitsAt(rest, 4, ".");
  if (!alone) alone = DigitsAt(rest, kDigits, "");
  if (!alone || is_in_a_word || (alone->size < rest.size() && IsOfAWord(rest[alone->size])))
    return std::nullopt;
  return alone;
}

std::optional<Address> MailAt(std::string_view text, std::size_t place) {
  const bool is_start = place == 0 || IsBreak(text[place - 1]) || text[place - 1] == '\'';
  if (!is_start || text[place] == '\'') return std::nullopt;
  std::size_t end = place;
  while (end < text.size() && end - place < kLongestMail && !IsBreak(text[end])) ++end;
  while (end > place && (text[end - 1] == '.' || text[end - 1] == '\'')) --end;
  const std::string_view word = text.substr(place, end - place);
  const std::size_t at = word.find('@');
  if (at == std::string_view::npos || at == 0 || at + 1 == word.size()) return std::nullopt;
  return Address{word.size(), ToLowerAscii(word)};
}

}  // namespace lab
