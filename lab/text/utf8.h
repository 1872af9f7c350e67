#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lab {

/// A character of UTF-8 and how many bytes it takes; 0 bytes for none.
struct Utf8Character {
  std::uint32_t code = 0;
  std::size_t size = 0;
};

/// The character at the start of `text`, which is not empty. Overlong forms, surrogates and numbers past the
/// last character are none.
Utf8Character FirstCharacter(std::string_view text);

/// The text as UTF-8: each byte that is not part of a character as the four characters "\xe9", so that names
/// that differ in such bytes still differ.
std::string ValidUtf8(std::string_view text);

/// Text that is safe to print to a terminal and is UTF-8, whatever bytes it came from: control characters
/// other than tab and line feed, marks that turn the direction of writing and characters without a width as
/// "\x1b" or "\u202e", and each byte that is no UTF-8 as "\xe9".
std::string Printable(std::string_view text);

/// As above on one line: tabs and line feeds are escaped as well.
std::string PrintableLine(std::string_view text);

}  // namespace lab
