#include "lab/reports/effects_text.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>

#include "lab/text/utf8.h"

namespace lab {
namespace {

constexpr std::size_t kMostMembers = 8;
constexpr std::size_t kMostObjects = 8;

std::string NameOf(const Effect& effect) {
  const std::string file = effect.file.substr(effect.file.rfind('/') + 1);
  return effect.entry.empty() ? file : file + ": " + effect.entry;
}

bool Moves(const Effect& effect, const std::string& member) {
  return std::ranges::any_of(effect.members,
                             [&](const std::string& path) { return path.find(member) != std::string::npos; });
}

void PrintEffect(std::ostream& out, const Effect& effect, const Discretion& discretion) {
  std::string text = MembersText(effect.members);
  for (const std::string& what : effect.otherwise) text += (text.empty() ? "" : "; ") + discretion.Text(what);
  out << PrintableLine(NameOf(effect)) << " -> " << PrintableLine(text) << '\n';
}

void PrintUnused(std::ostream& out, const std::vector<Effect>& effects) {
  std::map<std::string, std::string> unused;
  for (const Effect& effect : effects) {
    if (!effect.IsNone()) continue;
    std::string& names = unused[effect.file];
    names += (names.empty() ? "" : ", ") + (effect.entry.empty() ? "all of it" : effect.entry);
  }
  if (!unused.empty()) out << "\nUnused\n";
  for (const auto& [file, names] : unused) {
    out << "  " << PrintableLine(file) << ": " << PrintableLine(names) << '\n';
  }
}

}  // namespace

std::string MembersText(const std::set<std::string>& members) {
  std::map<std::string, std::vector<std::string>> objects;
  for (const std::string& member : members) {
    const std::size_t end = member.rfind('.');
    objects[member.substr(0, end)].push_back(member.substr(end));
  }
  std::string text;
  std::size_t number = 0;
  for (const auto& [object, names] : objects) {
    if (number++ == kMostObjects) {
      return text + "; and of " + std::to_string(objects.size() - kMostObjects) + " more objects";
    }
    text += (text.empty() ? "" : "; ") + object;
    for (std::size_t place = 0; place < std::min(names.size(), kMostMembers); ++place) {
      text += (place == 0 ? "" : ", ") + names[place];
    }
    if (names.size() > kMostMembers) text += " and " + std::to_string(names.size() - kMostMembers) + " more";
  }
  return text;
}

void PrintEffects(std::ostream& out, const std::vector<Effect>& effects, const std::string& member,
                  const Discretion& discretion) {
  for (const Effect& effect : effects) {
    if (!effect.IsNone() && (member.empty() || Moves(effect, member))) PrintEffect(out, effect, discretion);
  }
  if (member.empty()) PrintUnused(out, effects);
}

}  // namespace lab
