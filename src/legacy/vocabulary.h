#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace KELP::Wifi::Updater {

/// A legacy word and the number that the settings records store for it.
struct Word {
  std::string_view word;
  std::int32_t value;
};

/// All the words of one setting, and what stands in for any other.
struct Vocabulary {
  std::span<const Word> words;
  std::int32_t fallback;
  const char* message;  // logged for any other word, which it takes for its "%s"
  int line;             // the message's number
};

/// The value of `word`, compared whole and byte for byte. Total: an unknown word (the empty one too) gives
/// the fall-back and one log line at error priority.
std::int32_t Translate(const Vocabulary& vocabulary, const std::string& word);

}  // namespace KELP::Wifi::Updater
