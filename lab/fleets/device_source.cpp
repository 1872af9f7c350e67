#include "lab/fleets/device_source.h"

#include <json/json.h>

#include <memory>
#include <stdexcept>

#include "lab/fleets/json_text.h"

namespace lab::fleets {
namespace {

Json::Value Parse(std::string_view line) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["strictRoot"] = false;  // what is JSON, yet no object, is to be told as that
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  bool is_json = false;
  try {
    is_json = reader->parse(line.data(), line.data() + line.size(), &value, nullptr);
  } catch (const Json::Exception&) {
    // nested too deep
  }
  if (!is_json) throw std::invalid_argument("is no JSON");
  if (!value.isObject()) throw std::invalid_argument("is no JSON object");
  return value;
}

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

std::string Texts(const std::map<std::string, std::string>& texts) {
  std::string json = "{";
  for (const auto& [name, text] : texts) {
    json += (json.size() > 1 ? "," : "") + JsonText(name) + ":" + JsonText(text);
  }
  return json + "}";
}

}  // namespace

DeviceSource ParseListLine(std::string_view line, const std::filesystem::path& folder,
                           const std::string& from) {
  const Json::Value json = Parse(line);
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
  std::string line = "{\"image\":" + JsonText(source.image);
  if (!source.from.empty()) line += ",\"from\":" + JsonText(source.from);
  if (!source.files.empty()) line += ",\"files\":" + Texts(source.files);
  if (!source.boot.empty()) line += ",\"boot\":" + Texts(source.boot);
  return line + "}";
}

}  // namespace lab::fleets
