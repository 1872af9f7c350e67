#include "lab/sweeps/given_values.h"

#include <json/value.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "lab/sweeps/documents.h"
#include "lab/sweeps/migration_steps.h"
#include "lab/text/json.h"

namespace lab::sweeps {
namespace {

using Values = std::vector<const Json::Value*>;

/// The network document is one, whatever topology it is called for.
std::string GroupOf(const std::string& path) {
  return path.starts_with(kNetworkDocumentPrefix) ? kNetworkDocumentPrefix : path;
}

bool HasShapeOf(const Json::Value& known, const Json::Value& value) {
  if (known.type() != value.type() || known.size() != value.size()) return false;
  return !value.isObject() || known.getMemberNames() == value.getMemberNames();
}

bool AllowsValue(const Values& known, const Json::Value& value) {
  if (std::any_of(known.begin(), known.end(), [&](const Json::Value* other) { return *other == value; })) {
    return true;
  }
  if (!value.isObject() && !value.isArray()) return false;
  Values alike;
  std::copy_if(known.begin(), known.end(), std::back_inserter(alike),
               [&](const Json::Value* other) { return HasShapeOf(*other, value); });
  if (alike.empty()) return false;
  const auto allows_member = [&](const auto& key) {
    Values members;
    for (const Json::Value* const other : alike) members.push_back(&(*other)[key]);
    return AllowsValue(members, value[key]);
  };
  if (value.isObject()) {
    const std::vector<std::string> names = value.getMemberNames();
    return std::all_of(names.begin(), names.end(), allows_member);
  }
  for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
    if (!allows_member(i)) return false;
  }
  return true;
}

}  // namespace

struct GivenValues::Known {
  // cppcheck-suppress unusedStructMember  ; used below
  std::vector<Json::Value> values;
};

GivenValues::GivenValues() = default;
GivenValues::GivenValues(GivenValues&&) noexcept = default;
GivenValues& GivenValues::operator=(GivenValues&&) noexcept = default;
GivenValues::~GivenValues() = default;

void GivenValues::Add(const Tree& outcome) {
  for (const auto& [path, entry] : outcome) {
    if (!IsDocument(path)) continue;
    std::optional<Json::Value> value = ParseJson(entry.content);
    if (!value) throw std::runtime_error("no JSON: " + path);
    std::vector<Json::Value>& values = documents_[GroupOf(path)].values;
    if (std::find(values.begin(), values.end(), *value) == values.end()) values.push_back(std::move(*value));
  }
}

bool GivenValues::Allow(const std::string& path, std::string_view text) const {
  const auto known = documents_.find(GroupOf(path));
  const std::optional<Json::Value> value = ParseJson(text);
  if (known == documents_.end() || !value) return false;
  Values values;
  for (const Json::Value& other : known->second.values) values.push_back(&other);
  return AllowsValue(values, *value);
}

}  // namespace lab::sweeps
