#pragma once

#include <algorithm>
#include <optional>
#include <string_view>

namespace KELP::Wifi {

/// The line grammar that key=value files and section files share. All of it is bytes; nothing is trimmed.
/// Inline: nothing is done as often in a run.

struct Entry {
  std::string_view key;
  std::string_view value;
};

/// Cuts the first line off `rest`: the bytes before the first LF, or all of them where no LF is left.
inline std::string_view TakeLine(std::string_view& rest) {
  const std::size_t length = std::min(rest.find('\n'), rest.size());
  const std::string_view line = rest.substr(0, length);
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return line;
}

/// The entry on `line`: the key before the first '=', the value behind it without the one pair of double
/// quotes that may enclose it whole. None for a comment (first byte '#') and for a line without '='.
inline std::optional<Entry> ParseEntry(std::string_view line) {
  if (line.starts_with('#')) return std::nullopt;
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;

  std::string_view value = line.substr(equals + 1);
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
  return Entry{line.substr(0, equals), value};
}

}  // namespace KELP::Wifi
