#include "lab/fleets/device_source.h"

#include <stdexcept>
#include <utility>

#include "lab/text/json.h"

namespace lab::fleets {
namespace {

/// Paths and arguments end at a NUL, whatever stands behind it.
bool HasNul(const std::string& text) {
  return text.find('\0') != std::string::npos;
}

std::map<std::string, std::string> Texts(const Json::Value& value, const std::string& name) {
  if (!value.isObject()) throw std::invalid_argument("\"" + name + "\" is no object");
  std::map<std::string, std::string> texts;
  for (const std::string& key : value.getMemberNames()) {
    if (!value[key].isString()) {
      throw std::invalid_argument(std::string("\"").append(name).append("\": \"").append(key) +
                                  "\" is no text");
    }
    texts[key] = value[key].asString();
  }
  return texts;
}

std::string BuildNumber(const Json::Value& value) {
  if (value.isString() && !HasNul(value.asString())) return value.asString();
  if (value.isInt64()) return std::to_string(value.asInt64());
  throw std::invalid_argument("\"from\" is neither a text nor a whole number");
}

}  // namespace

DeviceSource ParseListLine(std::string_view line, const std::filesystem::path& folder,
                           const std::string& from) {
  const Json::Value json = ParseJson(line).value_or(Json::Value());
  if (!json.isObject()) throw std::invalid_argument("is no JSON object");
  DeviceSource source;
  source.from = from;
  for (const std::string& name : json.getMemberNames()) {
    const Json::Value& value = json[name];
    if (name == "image") {
      if (!value.isString() || value.asString().empty() || HasNul(value.asString())) {
        throw std::invalid_argument("\"image\" is no path");
      }
      source.image = (folder / value.asString()).lexically_normal().native();
    } else if (name == "from") {
      source.from = BuildNumber(value);
    } else if (name == "files") {
      source.files = Texts(value, name);
    } else if (name == "boot") {
      source.boot = Texts(value, name);
    } else {
      throw std::invalid_argument("\"" + name + "\" is no member of a list");
    }
  }
  if (source.image.empty()) throw std::invalid_argument("has no \"image\"");
  return source;
}

std::string ListLine(const DeviceSource& source) {
  JsonWriter json;
  json.BeginObject().Member("image", source.image);
  if (!source.from.empty()) json.Member("from", source.from);
  for (const auto& [name, texts] : {std::pair{"files", &source.files}, std::pair{"boot", &source.boot}}) {
    if (texts->empty()) continue;
    json.Name(name).BeginObject();
    for (const auto& [key, text] : *texts) json.Member(key, text);
    json.End();
  }
  return json.End().Text();
}

}  // namespace lab::fleets
