#include "platform/stand_in/text/entry_lines.h"

#include <algorithm>

namespace KELP::Wifi {

std::string_view TakeLine(std::string_view& rest) {
  const std::size_t length = std::min(rest.find('\n'), rest.size());
  const std::string_view line = rest.substr(0, length);
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return line;
}

std::optional<Entry> ParseEntry(std::string_view line) {
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
