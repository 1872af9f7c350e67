#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// An address in a text.
struct Address {
  /// How many bytes of the text it takes.
  std::size_t size = 0;
  /// In the form that all spellings of it have in common.
  std::string common;
};

/// The MAC address that begins at `place`: pairs with colons or dashes between them ("02:aa:00:00:00:01"),
/// threes of four digits with dots, or a word of twelve digits alone, in letters of either case. None where
/// there is no such.
std::optional<Address> MacAt(std::string_view text, std::size_t place);

/// The mail address that begins at `place`, which has to be the start of a word.
std::optional<Address> MailAt(std::string_view text, std::size_t place);

}  // namespace lab
