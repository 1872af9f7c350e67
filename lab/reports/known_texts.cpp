#include "lab/reports/known_texts.h"

#include <algorithm>
#include <iterator>

namespace lab {

void KnownTexts::Add(std::string_view text, std::string_view replacement) {
  if (text.empty() || text.size() > kLongest || texts_.size() >= kMost) return;
  texts_.emplace(text, replacement);
  first_bytes_.set(static_cast<unsigned char>(text.front()));
}

const std::pair<const std::string, std::string>* KnownTexts::LongestAt(std::string_view text) const {
  if (text.empty() || !first_bytes_.test(static_cast<unsigned char>(text.front()))) return nullptr;
  // What is no greater than the text and shares least with it bounds what may begin it: as many steps as the
  // text has beginnings among them, however many they are.
  while (!text.empty()) {
    auto known = texts_.upper_bound(text);
    if (known == texts_.begin()) return nullptr;
    --known;
    const std::string& key = known->first;
    const auto common =
        static_cast<std::size_t>(std::distance(text.begin(), std::ranges::mismatch(text, key).in1));
    if (common == key.size()) return &*known;
    text = text.substr(0, common);
  }
  return nullptr;
}

bool KnownTexts::AreIn(std::string_view text) const {
  for (; !text.empty(); text.remove_prefix(1)) {
    if (LongestAt(text) != nullptr) return true;
  }
  return false;
}

std::string KnownTexts::Replaced(std::string_view text) const {
  if (texts_.empty()) return std::string(text);
  std::string shown;
  while (!text.empty()) {
    const auto* const known = LongestAt(text);
    shown += known == nullptr ? text.substr(0, 1) : std::string_view(known->second);
    text.remove_prefix(known == nullptr ? 1 : known->first.size());
  }
  return shown;
}

}  // namespace lab
