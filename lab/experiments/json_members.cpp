#include "lab/experiments/json_members.h"

#include "lab/text/json.h"

namespace lab {
namespace {

/// Elements that the arrays of a device's files may have, tried in turn.
constexpr const char* kElements[]{"ORCHID", "LOTUS", "Band5GHz_1", "Band5GHz_2"};

std::vector<Json::Value> OtherValues(const Json::Value& value) {
  std::vector<Json::Value> others;
  if (value.isArray()) {
    others.emplace_back(Json::arrayValue);
    for (const char* element : kElements) {
      Json::Value array(Json::arrayValue);
      array.append(element);
      others.push_back(std::move(array));
    }
  } else if (value.isString()) {
    others = {Json::Value("FR"), Json::Value("DE")};
  } else if (value.isBool()) {
    others = {Json::Value(!value.asBool())};
  } else {
    others = {Json::Value(7), Json::Value(8)};
  }
  std::erase(others, value);
  return others;
}

}  // namespace

std::vector<JsonMember> JsonMembers(std::string_view text) {
  const Json::Value object = ParseJson(text).value_or(Json::Value());
  if (!object.isObject()) return {};
  std::vector<JsonMember> members;
  for (const std::string& name : object.getMemberNames()) {
    JsonMember member{name, {}};
    Json::Value without = object;
    without.removeMember(name);
    member.others.push_back(DocumentJson(without));
    for (const Json::Value& other : OtherValues(object[name])) {
      Json::Value changed = object;
      changed[name] = other;
      member.others.push_back(DocumentJson(changed));
    }
    members.push_back(std::move(member));
  }
  return members;
}

}  // namespace lab
