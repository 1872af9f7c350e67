#include "lab/household/places.h"

#include "lab/household/legacy_words.h"

namespace lab {

std::string NameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string ToldOf(const RunView& view, const std::string& file, std::string_view key) {
  const std::optional<std::string> word = view.Was(file, key);
  std::string told = NameOf(file).append(": ").append(key);
  return word ? told.append("=").append(*word) : told.append(" is missing");
}

std::string Place::Told(std::string_view key) const {
  return ToldOf(view, radio.file, network.Key(key));
}

std::string Place::ToldWithoutWord(std::string_view key) const {
  return NameOf(radio.file) + ": " + network.Key(key);
}

bool Place::WasOn() const {
  return !LooksOff(Was("enabled").value_or(""));
}

void ForEachNetworkOnRadio(const RunView& view, FindingCollector& findings,
                           const std::function<void(const Place&)>& visit) {
  for (const NetworkView& network : view.Networks()) {
    for (const RadioView& radio : network.radios) {
      if (!view.HadEntries(radio.file)) continue;
      const std::size_t place = findings.Count();
      const Place visited{network, radio, view};
      visit(visited);
      if (!visited.WasOn()) findings.NoteFrom(place, kOffNote);
    }
  }
}

}  // namespace lab
