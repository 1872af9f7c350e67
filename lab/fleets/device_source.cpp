#include "lab/fleets/device_source.h"

#include <stdexcept>
#include <utility>

#include "lab/text/base64.h"
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

Json::Value Encoded(const std::map<std::string, std::string>& texts) {
  Json::Value json(Json::objectValue);
  for (const auto& [name, text] : texts) json[ToBase64(name)] = ToBase64(text);
  return json;
}

std::string Decoded(const Json::Value& text) {
  return FromBase64(text.asString()).value();
}

std::map<std::string, std::string> DecodedTexts(const Json::Value& json) {
  std::map<std::string, std::string> texts;
  for (const std::string& name : json.getMemberNames()) texts[FromBase64(name).value()] = Decoded(json[name]);
  return texts;
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

std::string ToMessage(const DeviceSource& source) {
  Json::Value json;
  json["image"] = ToBase64(source.image);
  json["from"] = ToBase64(source.from);
  json["files"] = Encoded(source.files);
  json["boot"] = Encoded(source.boot);
  return JsonLine(json);
}

DeviceSource FromMessage(const std::string& message) {
  const Json::Value json = ParseJson(message).value();
  return {Decoded(json["image"]), Decoded(json["from"]), DecodedTexts(json["files"]),
          DecodedTexts(json["boot"])};
}

}  // namespace lab::fleets
