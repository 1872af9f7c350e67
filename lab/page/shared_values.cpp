#include "lab/page/shared_values.h"

#include <algorithm>

#include "lab/page/script_data.h"

namespace lab::page {

Json::Value SharedValues::Share(const Json::Value& value) {
  if (value.isArray()) return ShareArray(value);
  if (value.isObject()) return ShareObject(value);
  return value;
}

Json::Value SharedValues::ShareArray(const Json::Value& array) {
  const bool has_objects =
      std::any_of(array.begin(), array.end(), [](const Json::Value& v) { return v.isObject(); });
  if (!has_objects) return array;
  Json::Value shared;
  Json::Value& refs = shared["refs"];
  for (const Json::Value& element : array) {
    const std::string text = ScriptData(Share(element));
    const auto [known, is_new] = places_.try_emplace(text, texts_.size());
    if (is_new) texts_.push_back(text);
    refs.append(static_cast<Json::UInt64>(known->second));
  }
  return shared;
}

Json::Value SharedValues::ShareObject(const Json::Value& object) {
  // What only looks like a reference would lead the page astray, or round for ever.
  if (object.isMember("refs")) return ScriptData(object);
  Json::Value shared(Json::objectValue);
  for (const std::string& name : object.getMemberNames()) {
    if (name != "settings" || !object["settings"].isArray() || !object["file"].isString()) {
      shared[name] = Share(object[name]);
      continue;
    }
    Json::Value settings = object["settings"];
    for (Json::Value& setting : settings) {
      if (setting.isObject() && setting.get("file", "") == object["file"]) setting.removeMember("file");
    }
    shared[name] = ShareArray(settings);
  }
  return shared;
}

}  // namespace lab::page
