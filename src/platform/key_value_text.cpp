#include "platform/key_value_text.h"

#include <utility>

#include "platform/entry_lines.h"

namespace KELP::Wifi {

KeyValueText::KeyValueText(std::string text) : text_(std::move(text)) {
  std::string_view rest = text_;
  while (!rest.empty()) {
    const std::size_t start = text_.size() - rest.size();
    if (ParseEntry(TakeLine(rest))) lines_.push_back(start);
  }
}

std::optional<std::string_view> KeyValueText::Find(std::string_view key) const {
  const std::string_view text = text_;
  for (const std::size_t start : lines_) {
    // Most lines hold another key: the byte behind the key tells nearly all of them without a comparison.
    const std::size_t equals = start + key.size();
    if (equals >= text.size() || text[equals] != '=' || text.substr(start, key.size()) != key) continue;
    std::string_view rest = text.substr(start);
    const std::optional<Entry> entry = ParseEntry(TakeLine(rest));
    if (entry->key == key) return entry->value;  // it differs when `key` itself holds a '=' or a LF
  }
  return std::nullopt;
}

}  // namespace KELP::Wifi
