#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "lab/household/legacy_words.h"
#include "lab/household/message_kinds.h"
#include "lab/household/rules.h"
#include "lab/text/json.h"

namespace lab {
namespace {

constexpr const char* kRepeater = "re";
constexpr const char* kNoCountry = "MaxCountryCode";

/// Whether the mesh file names nodes, as far as it can be read.
bool NamesNodes(std::string_view text) {
  const auto file = ParseJson(text);
  if (file) {
    const Json::Value nodes = file->isObject() ? (*file)["repeater_nodes"] : Json::Value();
    return nodes.isArray() || nodes.isObject() ? !nodes.empty() : !nodes.isNull();
  }
  const std::size_t member = text.find("repeater_nodes");
  if (member == std::string_view::npos) return !TrimBlanks(text).empty();
  const std::size_t list = text.find('[', member);
  if (list == std::string_view::npos) return false;
  text = TrimStart(text.substr(list + 1));
  return !text.empty() && text.front() != ']';
}

/// Whether anything on the device tells of a mesh.
bool WasInMesh(const RunView& view) {
  const StoredValue swap = view.Stored(kInformationStore, "mesh_swap_backhaul_band");
  return NamesNodes(view.TextOf(kMeshFile)) || (swap.value && !LooksOff(*swap.value));
}

/// "repeater" is another word, which a router with nodes of its own may have.
bool MeansRepeater(const RunView& view, const StoredValue& role) {
  const std::string word = NormalizeValue(role.Word());
  return word == kRepeater || (word == "repeater" && !NamesNodes(view.TextOf(kMeshFile)));
}

bool IsRepeaterNow(const RunView& view) {
  const Json::Value* const global = view.Document("global.json");
  return global != nullptr && global->isObject() && FlagIn((*global)["meshInfo"], "isRepeater");
}

/// The global files have a role of their own.
Observations ObserveRoleOf13(const RunView& view) {
  const StoredValue role = view.Stored(kInformationStore, "mesh_network_role");
  const StoredValue own = view.Stored(kMeshRoleFile, "role");
  const Cause cause = CauseInFile(view, own.file, own.has_carriage_return);
  if (MeansRepeater(view, own)) return {{"repeater-lost", own.Detail(), cause}};
  if (NormalizeValue(role.Word()) != kRepeater) return {};
  return {{"repeater-lost", own.Detail() + ", but " + role.Detail(), cause}};
}

/// What the global files of release 1.3 say of the backhaul, in whatever spelling.
void CheckBackhaul(const RunView& view, FindingCollector& findings) {
  const auto file = ParseJson(view.TextOf(kBackhaulFile));
  const Json::Value* const global = view.Document("global.json");
  if (!file || !file->isObject() || global == nullptr || FlagIn(*global, "backhaulSwapped")) return;
  for (const Json::Value& band : (*file)["radio_frequencies"]) {
    const std::string name = band.isString() ? band.asString() : "";
    // The first of the two that is spelled as it should be decides.
    if (name == "Band5GHz_1") return;
    const std::string word = NormalizeValue(name);
    if (word == "band5ghz_1") {
      findings.Add(kReadByLuck, "backhaul.json: " + name);
      return;
    }
    if (word != "band5ghz_2") continue;
    findings.Add("backhaul-unreadable", "backhaul.json: " + name);
    return;
  }
  findings.Add("backhaul-unreadable", "backhaul.json: radio_frequencies names no 5 GHz band");
}

void CheckGlobalValues(const RunView& view, FindingCollector& findings) {
  const Json::Value* const global = view.Document("global.json");
  if (global == nullptr || !global->isObject()) return;
  const Json::Value& mesh = (*global)["meshInfo"];
  const Json::Value nothing;
  for (const Json::Value& model : mesh.isObject() ? mesh["connectedModels"] : nothing) {
    if (model == "Error") findings.Add("mesh-model-unknown", "model.json: connected_models has Error");
  }
  if (TextIn((*global)["countryCodeSetting"], "countryCode") != kNoCountry) return;
  findings.Add("country-invalid", view.IsWholeMigration()
                                      ? view.Stored(kInformationStore, "country_code").Detail()
                                      : std::string("country.json: country_code=") + kNoCountry);
}

}  // namespace

Observations ObserveMeshRole(const RunView& view) {
  // The role is read in every run, and logged, but only a whole migration makes something of it.
  if (!view.IsWholeMigration() || !view.Logged(kMeshRoleUnreadable)) return {};
  if (WasInMesh(view)) {
    return {{"mesh-role-unreadable", view.LoggedArguments(kMeshRoleUnreadable).front()}};
  }
  const StoredValue role = view.Stored(kInformationStore, "mesh_network_role");
  if (role.value) return {};
  return {{"setting-not-stored", role.DetailWithoutValue() + " is not stored; now no repeater"}};
}

Observations ObserveRepeater(const RunView& view) {
  if (IsRepeaterNow(view)) return {};
  if (view.IsOfGlobalFiles()) return ObserveRoleOf13(view);
  const StoredValue role = view.Stored(kInformationStore, "mesh_network_role");
  if (!view.IsWholeMigration() || !MeansRepeater(view, role)) return {};
  return {{"repeater-lost", role.Detail(), CauseInFile(view, role.file, role.has_carriage_return)}};
}

void CheckDevice(const RunView& view, FindingCollector& findings) {
  if (!view.IsWholeMigration() && !view.IsOfGlobalFiles()) return;
  CheckGlobalValues(view, findings);
  if (view.IsOfGlobalFiles()) CheckBackhaul(view, findings);
  if (!view.IsWholeMigration()) return;
  for (const char* document : kNetworkDocuments) {
    if (document == view.NetworkDocument() || !view.Had(std::string(kWifiFolder) + document)) continue;
    findings.Add("stale-network-document", std::string(document) + " beside " + view.NetworkDocument());
  }
}

}  // namespace lab
