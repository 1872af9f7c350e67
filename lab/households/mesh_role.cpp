#include "lab/households/mesh_role.h"

#include <optional>

#include "lab/households/legacy_words.h"

namespace lab {
namespace {

constexpr const char* kRepeater = "re";

bool MeansRepeater(const std::optional<std::string>& word) {
  const std::string plain = PlainWord(word.value_or(""));
  return plain == kRepeater || plain == "repeater";
}

bool HasNodes(const Rehearsal& rehearsal) {
  const Json::Value* const global = rehearsal.Document("global.json");
  if (global == nullptr || !global->isObject()) return false;
  const Json::Value& mesh = (*global)["meshInfo"];
  return mesh.isObject() && mesh["connectedModels"].isArray() && !mesh["connectedModels"].empty();
}

}  // namespace

std::string LostRepeaterRole(const Rehearsal& rehearsal) {
  const std::optional<std::string> role = rehearsal.Was(kInformationStore, "mesh_network_role");
  const std::string told = "info.conf: mesh_network_role=" + role.value_or("");
  if (rehearsal.IsWholeMigration()) {
    // One with nodes of its own is the mesh's router, whatever the word.
    return MeansRepeater(role) && role != kRepeater && !HasNodes(rehearsal) ? told : "";
  }
  if (!rehearsal.IsOfGlobalFiles()) return "";
  // The global files have a role of their own.
  const std::optional<std::string> own = rehearsal.Was(kMeshRoleFile, "role");
  if (own == kRepeater) return "";
  if (MeansRepeater(own)) return "mesh_role.conf: role=" + *own;
  if (role != kRepeater) return "";
  return own ? "mesh_role.conf: role=" + *own + ", but " + told
             : "mesh_role.conf: role is missing, but " + told;
}

}  // namespace lab
