#include "lab/text/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace lab {
namespace {

/// Control characters, and those that change what is seen beside them without being seen.
bool IsTreacherous(std::uint32_t code) {
  if (code >= 0x20 && code < 0x7F) return false;  // most texts have nothing else
  struct Range {
    std::uint32_t first;
    std::uint32_t last;
  };
  static constexpr std::array<Range, 15> kRanges{{{0x00, 0x1F},
                                                  {0x7F, 0x9F},
                                                  {0xAD, 0xAD},
                                                  {0x61C, 0x61C},
                                                  {0x115F, 0x1160},
                                                  {0x17B4, 0x17B5},
                                                  {0x180B, 0x180F},
                                                  {0x200B, 0x200F},
                                                  {0x2028, 0x202E},
                                                  {0x2060, 0x206F},
                                                  {0xFE00, 0xFE0F},
                                                  {0xFEFF, 0xFEFF},
                                                  {0xFFF0, 0xFFFB},
                                                  {0x1BCA0, 0x1BCA3},
                                                  {0xE0000, 0xE0FFF}}};
  return std::ranges::any_of(kRanges,
                             [=](const Range& range) { return code >= range.first && code <= range.last; });
}

std::string Escaped(const char* format, std::uint32_t number) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), format, number);
  return text.data();
}

/// The text with what is no UTF-8 escaped, and every character that `is_unwanted`.
template <typename IsUnwanted>
std::string WithEscapes(std::string_view text, IsUnwanted is_unwanted) {
  std::string safe;
  safe.reserve(text.size());
  while (!text.empty()) {
    const auto plain = std::ranges::find_if(text, [](char byte) { return byte < ' ' || byte > '~'; });
    const auto length = static_cast<std::size_t>(plain - text.begin());
    safe.append(text, 0, length);
    text.remove_prefix(length);
    if (text.empty()) break;
    const auto [code, size] = FirstCharacter(text);
    if (size == 0) {
      safe += Escaped("\\x%02x", static_cast<unsigned char>(text.front()));
    } else if (is_unwanted(code)) {
      safe += Escaped(code < 0x80 ? "\\x%02x" : "\\u%04x", code);
    } else {
      safe.append(text, 0, size);
    }
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return safe;
}

}  // namespace

Utf8Character FirstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(text[offset]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return {};
  std::uint32_t code = lead & (0x7FU >> size);
  for (std::size_t offset = 1; offset < size; ++offset) {
    if ((byte(offset) & 0xC0U) != 0x80U) return {};
    code = code << 6U | (byte(offset) & 0x3FU);
  }
  const std::uint32_t least = size == 4 ? 0x10000 : size == 3 ? 0x800 : 0x80;
  const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < least || code > 0x10FFFF || is_surrogate) return {};
  return {code, size};
}

std::string ValidUtf8(std::string_view text) {
  return WithEscapes(text, [](std::uint32_t) { return false; });
}

std::string Printable(std::string_view text) {
  return WithEscapes(text,
                     [](std::uint32_t code) { return code != '\t' && code != '\n' && IsTreacherous(code); });
}

std::string PrintableLine(std::string_view text) {
  return WithEscapes(text, IsTreacherous);
}

}  // namespace lab
