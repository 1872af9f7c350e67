#include "platform/stand_in/text/key_value_text.h"

#include <utility>

#include "platform/stand_in/text/entry_lines.h"

namespace KELP::Wifi {

KeyValueText::KeyValueText(std::string text) : text_(std::move(text)) {
  std::string_view rest = text_;
  while (!rest.empty()) {
    if (const auto entry = ParseEntry(TakeLine(rest))) values_.try_emplace(entry->key, entry->value);
  }
}

std::optional<std::string_view> KeyValueText::Find(std::string_view key) const {
  const auto entry = values_.find(key);
  if (entry == values_.end()) return std::nullopt;
  return entry->second;
}

}  // namespace KELP::Wifi
