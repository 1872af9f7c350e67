#include <optional>
#include <string>
#include <string_view>

#include "lab/findings/rules.h"

namespace lab {
namespace {

/// A fact that the program logs when it cannot be read.
struct Fact {
  int message;
  std::string_view finding;
  const char* key;  // of the information store; null where it stands elsewhere
};

constexpr Fact kFacts[]{
    {280, "country-unknown", "country_code"},
    {140, "mesh-role-unreadable", nullptr},
    {168, "topology-unreadable", "net_topology"},
    {300, "backhaul-unreadable", "mesh_swap_backhaul_band"},
    {896, "usb3-unreadable", nullptr},
};

std::string Told(const Rehearsal& rehearsal, const Fact& fact) {
  if (fact.key == nullptr) return rehearsal.ToldBy(fact.message).front();
  const std::optional<std::string> word = rehearsal.Was(kInformationStore, fact.key);
  return word ? fact.key + ("=" + *word) : std::string(fact.key) + " is missing";
}

}  // namespace

void FindAboutDevice(const Rehearsal& rehearsal, Findings& findings) {
  for (const Fact& fact : kFacts) {
    if (rehearsal.Logged(fact.message)) findings.Add(fact.finding, Told(rehearsal, fact));
  }
}

}  // namespace lab
