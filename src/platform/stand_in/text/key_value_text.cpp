#include "platform/stand_in/text/key_value_text.h"

#include <stdexcept>
#include <utility>

#include "platform/stand_in/text/entry_lines.h"

namespace KELP::Wifi {

KeyValueText::KeyValueText(std::string text) : text_(std::move(text)) {
  if (text_.size() > kNone) throw std::length_error("text of 4 GiB or more");
  first_.fill(kNone);
  std::array<std::uint32_t, kKinds> last;  // of each kind that has a first
  std::string_view rest = text_;
  while (!rest.empty()) {
    const auto start = static_cast<std::uint32_t>(text_.size() - rest.size());
    const auto entry = ParseEntry(TakeLine(rest));
    if (!entry) continue;
    const auto place = static_cast<std::uint32_t>(entries_.size());
    const std::size_t kind = KindOf(entry->key);
    entries_.push_back({start, kNone});
    (first_[kind] == kNone ? first_[kind] : entries_[last[kind]].next) = place;
    last[kind] = place;
  }
}

std::optional<std::string_view> KeyValueText::Find(std::string_view key) const {
  for (std::uint32_t place = first_[KindOf(key)]; place != kNone; place = entries_[place].next) {
    std::string_view line(text_.data() + entries_[place].start, text_.size() - entries_[place].start);
    // A look at where the key would end tells nearly all others apart.
    if (line.size() <= key.size() || line[key.size()] != '=' || !line.starts_with(key)) continue;
    const Entry entry = *ParseEntry(TakeLine(line));
    if (entry.key.size() == key.size()) return entry.value;
  }
  return std::nullopt;
}

/// What sets most of a file's keys apart and costs the same for all of them.
std::size_t KeyValueText::KindOf(std::string_view key) {
  if (key.empty()) return 0;
  const auto byte = [&](std::size_t place) { return static_cast<unsigned char>(key[place]); };
  return (key.size() * 5 + byte(key.size() / 2) * 3U + byte(key.size() - 1)) % kKinds;
}

}  // namespace KELP::Wifi
