#include "lab/findings/places.h"

#include "lab/households/legacy_words.h"

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

bool Place::WasOn() const {
  return !SaysOff(Was("enabled").value_or(""));
}

void FindInPlaces(const Rehearsal& rehearsal, Findings& findings,
                  const std::function<void(const Place&)>& visit) {
  for (const NetworkPart& network : rehearsal.Networks()) {
    for (const RadioPart& radio : network.radios) {
      if (!rehearsal.HadEntries(radio.file)) continue;
      const std::size_t place = findings.Count();
      const Place visited{network, radio, rehearsal};
      visit(visited);
      if (!visited.WasOn()) findings.NoteFrom(place, kOffNote);
    }
  }
}

}  // namespace lab
