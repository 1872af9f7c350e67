// The text transform of the kernel's MAC address entries, held against the expression 's/..\B/&:/g' matched
// the way its definition reads. Input: the entry's text.
#include "legacy/interface_mac.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/plain_text.h"

namespace {

enum class Token { AnyByte, NoWordBoundary };
constexpr std::array kPattern{Token::AnyByte, Token::AnyByte, Token::NoWordBoundary};

bool IsWordByte(const std::string& line, std::size_t place) {
  constexpr const char* kWordBytes = "0123456789_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return place < line.size() && std::string(kWordBytes).find(line[place]) != std::string::npos;
}

bool IsWordBoundary(const std::string& line, std::size_t place) {
  const bool is_word_before = place > 0 && IsWordByte(line, place - 1);
  return is_word_before != IsWordByte(line, place);
}

/// Where the match that starts at `place` ends; none where the pattern from `token` on does not match there.
std::optional<std::size_t> Match(const std::string& line, std::size_t place, std::size_t token) {
  if (token == kPattern.size()) return place;
  switch (kPattern[token]) {
    case Token::AnyByte:
      if (place == line.size()) return std::nullopt;
      return Match(line, place + 1, token + 1);
    case Token::NoWordBoundary:
      if (IsWordBoundary(line, place)) return std::nullopt;
      return Match(line, place, token + 1);
  }
  return std::nullopt;
}

std::string Substitute(const std::string& line) {
  std::string result;
  std::size_t place = 0;
  while (place < line.size()) {
    if (const auto end = Match(line, place, 0)) {
      result += line.substr(place, *end - place) + ":";
      place = *end;
    } else {
      result += line[place++];
    }
  }
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string text = input.TakeRest();

  std::string expected;
  for (const std::string& line : fuzz::PlainLines(text)) expected += Substitute(line) + "\n";
  expected.pop_back();  // the last piece has no LF behind it
  FUZZ_CHECK(KELP::Wifi::Updater::InsertPairColons(text) == expected);
  return 0;
}
