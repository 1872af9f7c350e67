#include "lab/household/schemas.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include "lab/text/json.h"

namespace lab {
namespace {

/// What a reference of the document itself ("#/$defs/radio") names.
const Json::Value& Target(const Json::Value& document, std::string_view reference) {
  const Json::Value* target = &document;
  while (!reference.empty()) {
    reference.remove_prefix(reference.find('/') == std::string_view::npos ? reference.size()
                                                                          : reference.find('/') + 1);
    if (!reference.empty()) target = &(*target)[std::string(reference.substr(0, reference.find('/')))];
  }
  return *target;
}

/// Puts in place of a property that refers to another object's what is said there.
void FollowProperties(Json::Value& document) {
  const Json::Value whole = document;
  for (const std::string& object : whole["$defs"].getMemberNames()) {
    Json::Value& properties = document["$defs"][object]["properties"];
    for (const std::string& name : properties.getMemberNames()) {
      if (!properties[name].isMember("$ref")) continue;
      const std::string reference = properties[name]["$ref"].asString();
      if (reference.find("/properties/") != std::string::npos) properties[name] = Target(whole, reference);
    }
  }
}

}  // namespace

const Json::Value& Resolved(const Json::Value& document, const Json::Value& schema) {
  return schema.isMember("$ref") ? Target(document, schema["$ref"].asString()) : schema;
}

const Json::Value& Schema(const std::string& document) {
  static std::map<std::string, Json::Value> parsed;
  const auto [place, is_new] = parsed.try_emplace(document);
  if (!is_new) return place->second;
  std::optional<Json::Value> schema = ParseJson(SchemaText(document + ".schema.json"));
  if (!schema) throw std::logic_error("the schema of " + document + " is no JSON");
  FollowProperties(*schema);
  return place->second = std::move(*schema);
}

const Json::Value& Properties(const std::string& document, const std::string& object) {
  const Json::Value& schema = Schema(document);
  return object.empty() ? schema["properties"] : schema["$defs"][object]["properties"];
}

std::string Title(const Json::Value& property) {
  return property["title"].asString();
}

std::string Meaning(const Json::Value& property, const Json::Value& value) {
  for (const char* choices : {"oneOf", "anyOf"}) {
    for (const Json::Value& choice : property[choices]) {
      if (choice.isMember("const") && choice["const"] == value) return choice["title"].asString();
    }
  }
  return "";
}

std::string RadioName(int frequency) {
  const std::string name = Meaning(Properties("wps", "")["band"], frequency);
  return name.empty() ? "radio " + std::to_string(frequency) : name;
}

}  // namespace lab
