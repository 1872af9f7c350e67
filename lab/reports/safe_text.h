#pragma once

#include <string>
#include <string_view>

namespace lab {

/// Text that is safe to print to a terminal and is UTF-8, whatever bytes it came from: control characters
/// other than tab and line feed, marks that turn the direction of writing and characters without a width as
/// "\x1b" or "\u202e", and each byte that is no UTF-8 as "\xe9".
std::string Printable(std::string_view text);

/// As above on one line: tabs and line feeds are escaped as well.
std::string PrintableLine(std::string_view text);

}  // namespace lab
