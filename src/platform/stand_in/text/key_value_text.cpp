#include "platform/stand_in/text/key_value_text.h"

#include <limits>
#include <stdexcept>
#include <utility>

#include "platform/stand_in/text/entry_lines.h"

namespace KELP::Wifi {

KeyValueText::KeyValueText(std::string text) : text_(std::move(text)) {
  if (text_.size() > std::numeric_limits<std::uint32_t>::max())
    throw std::length_error("text of 4 GiB or more");
  std::string_view rest = text_;
  while (!rest.empty()) {
    const std::size_t start = text_.size() - rest.size();
    if (const auto entry = ParseEntry(TakeLine(rest))) {
      entries_.push_back({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(entry->key.size())});
    }
  }
}

std::optional<std::string_view> KeyValueText::Find(std::string_view key) const {
  const std::string_view text = text_;
  for (const Place& place : entries_) {
    // The lengths tell nearly all other keys apart without a look at the text.
    if (place.key_length != key.size() || text.substr(place.start, place.key_length) != key) continue;
    std::string_view rest = text.substr(place.start);
    return ParseEntry(TakeLine(rest))->value;
  }
  return std::nullopt;
}

}  // namespace KELP::Wifi
