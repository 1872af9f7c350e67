#pragma once

#include <optional>
#include <string_view>

namespace KELP::Wifi {

/// The line grammar that key=value files and section files share. All of it is bytes; nothing is trimmed.

struct Entry {
  std::string_view key;
  std::string_view value;
};

/// Cuts the first line off `rest`: the bytes before the first LF, or all of them where no LF is left.
std::string_view TakeLine(std::string_view& rest);

/// The entry on `line`: the key before the first '=', the value behind it without the one pair of double
/// quotes that may enclose it whole. None for a comment (first byte '#') and for a line without '='.
std::optional<Entry> ParseEntry(std::string_view line);

}  // namespace KELP::Wifi
