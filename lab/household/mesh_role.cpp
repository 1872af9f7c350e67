#include "lab/household/mesh_role.h"

#include <optional>

#include "lab/household/legacy_words.h"

namespace lab {
namespace {

constexpr const char* kRepeater = "re";

bool MeansRepeater(const std::optional<std::string>& word) {
  const std::string plain = NormalizeValue(word.value_or(""));
  return plain == kRepeater || plain == "repeater";
}

bool HasNodes(const RunView& view) {
  const Json::Value* const global = view.Document("global.json");
  if (global == nullptr || !global->isObject()) return false;
  const Json::Value& mesh = (*global)["meshInfo"];
  return mesh.isObject() && mesh["connectedModels"].isArray() && !mesh["connectedModels"].empty();
}

}  // namespace

std::string LostRepeaterRole(const RunView& view) {
  const std::optional<std::string> role = view.Was(kInformationStore, "mesh_network_role");
  const std::string told = "info.conf: mesh_network_role=" + role.value_or("");
  if (view.IsWholeMigration()) {
    // One with nodes of its own is the mesh's router, whatever the word.
    return MeansRepeater(role) && role != kRepeater && !HasNodes(view) ? told : "";
  }
  if (!view.IsOfGlobalFiles()) return "";
  // The global files have a role of their own.
  const std::optional<std::string> own = view.Was(kMeshRoleFile, "role");
  if (own == kRepeater) return "";
  if (MeansRepeater(own)) return "mesh_role.conf: role=" + *own;
  if (role != kRepeater) return "";
  return own ? "mesh_role.conf: role=" + *own + ", but " + told
             : "mesh_role.conf: role is missing, but " + told;
}

}  // namespace lab
