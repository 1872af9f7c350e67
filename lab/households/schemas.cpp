#include "lab/households/schemas.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include "lab/text/json.h"

namespace lab {

const Json::Value& Schema(const std::string& document) {
  static std::map<std::string, Json::Value> parsed;
  const auto [place, is_new] = parsed.try_emplace(document);
  if (!is_new) return place->second;
  std::optional<Json::Value> schema = ParseJson(SchemaText(document + ".schema.json"));
  if (!schema) throw std::logic_error("the schema of " + document + " is no JSON");
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
