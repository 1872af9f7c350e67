#include "lab/findings/places.h"

namespace lab {

std::string NameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string ToldOf(const Rehearsal& rehearsal, const std::string& file, std::string_view key) {
  const std::optional<std::string> word = rehearsal.Was(file, key);
  std::string told = NameOf(file).append(": ").append(key);
  return word ? told.append("=").append(*word) : told.append(" is missing");
}

std::string Place::Told(std::string_view key) const {
  return ToldOf(rehearsal, radio.file, network.Key(key));
}

std::string Place::ToldWithoutWord(std::string_view key) const {
  return NameOf(radio.file) + ": " + network.Key(key);
}

void ForEachPlace(const Rehearsal& rehearsal, const std::function<void(const Place&)>& visit) {
  for (const NetworkPart& network : rehearsal.Networks()) {
    for (const RadioPart& radio : network.radios) {
      if (rehearsal.Had(radio.file)) visit({network, radio, rehearsal});
    }
  }
}

bool IsUnclearFlag(const std::optional<std::string>& word) {
  return word && !word->empty() && *word != "yes" && *word != "no";
}

}  // namespace lab
