#include "lab/page/script_data.h"

#include "lab/text/json.h"
#include "lab/text/utf8.h"

namespace lab::page {

Json::Value PrintableJson(const Json::Value& value) {
  if (value.isString()) return Printable(value.asString());
  if (value.isArray()) {
    Json::Value safe(Json::arrayValue);
    for (const Json::Value& element : value) safe.append(PrintableJson(element));
    return safe;
  }
  if (value.isObject()) {
    Json::Value safe(Json::objectValue);
    for (const std::string& name : value.getMemberNames()) safe[Printable(name)] = PrintableJson(value[name]);
    return safe;
  }
  return value;
}

std::string ScriptData(const Json::Value& value) {
  std::string text;
  for (const char byte : JsonLine(PrintableJson(value))) {
    // These stand in strings alone.
    switch (byte) {
      case '<':
        text += "\\u003c";
        break;
      case '>':
        text += "\\u003e";
        break;
      case '&':
        text += "\\u0026";
        break;
      default:
        text += byte;
    }
  }
  return text;
}

}  // namespace lab::page
