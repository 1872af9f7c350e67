#include <optional>
#include <string>
#include <string_view>

#include "lab/household/legacy_words.h"
#include "lab/household/mesh_role.h"
#include "lab/household/rules.h"

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

std::string Told(const RunView& view, const Fact& fact) {
  if (fact.key == nullptr) return view.LoggedArguments(fact.message).front();
  const std::optional<std::string> word = view.Was(kInformationStore, fact.key);
  return word ? fact.key + ("=" + *word) : std::string(fact.key) + " is missing";
}

/// What the global files of release 1.3 say of the backhaul, in whatever spelling.
void FindBackhaul(const RunView& view, FindingCollector& findings) {
  const auto file = ParseDocument(view.TextOf(std::string(kWifiFolder) + "backhaul.json"));
  const Json::Value* const global = view.Document("global.json");
  if (!file || !file->isObject() || global == nullptr || FlagIn(*global, "backhaulSwapped")) return;
  for (const Json::Value& band : (*file)["radio_frequencies"]) {
    const std::string name = band.isString() ? band.asString() : "";
    // The first of the two that is spelled as it should be decides.
    if (name == "Band5GHz_1") return;
    if (NormalizeValue(name) != "band5ghz_2") continue;
    findings.Add("backhaul-unreadable", "backhaul.json: " + name);
    return;
  }
}

}  // namespace

void CheckDevice(const RunView& view, FindingCollector& findings) {
  // The role is read in every run, and logged, but a whole migration alone makes something of it.
  for (const Fact& fact : kFacts) {
    if (view.IsWholeMigration() && view.Logged(fact.message)) {
      findings.Add(fact.finding, Told(view, fact));
    }
  }
  const std::string role = LostRepeaterRole(view);
  if (!role.empty()) findings.Add("repeater-lost", role);
  if (view.IsOfGlobalFiles()) FindBackhaul(view, findings);
}

}  // namespace lab
