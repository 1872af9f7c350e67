#include "legacy/vocabulary.h"
#include <cstdint>
#include <string>

#include "base/log.h"

namespace KELP::Wifi::Updater {

std::int32_t Translate(const Vocabulary& vocabulary, const std::string& word) {
  for (const Word& known : vocabulary.words) {
    if (known.word == word) return known.value;
  }
  Log(LOG_ERR, vocabulary.message, vocabulary.line, word.c_str());
  return vocabulary.fallback;
}

}  // namespace KELP::Wifi::Updater
