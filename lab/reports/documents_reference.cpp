#include "lab/reports/documents_reference.h"

#include <json/value.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "lab/household/schemas.h"

namespace lab {
namespace {

constexpr Json::ArrayIndex kMostNames = 8;  // more are not listed

std::string Quoted(const std::string& name) {
  return "`" + name + "`";
}

std::string ValueText(const Json::Value& value) {
  return Quoted(value.asString());
}

void Join(std::string& text, std::string_view separator, const std::string& more) {
  if (!text.empty()) text += separator;
  text += more;
}

std::string TypeText(const Json::Value& document, const Json::Value& schema) {
  std::string type = schema["type"].asString();
  if (type == "boolean") return "bool";
  if (type == "integer") return "number";
  if (type == "array") return "array of " + TypeText(document, Resolved(document, schema["items"])) + "s";
  return type;
}

std::string NamesText(const Json::Value& names) {
  const Json::ArrayIndex count = names.size();
  if (count > kMostNames) {
    return "one of " + std::to_string(count) + " names, " + ValueText(names[0U]) + " to " +
           ValueText(names[count - 1]);
  }
  std::string text;
  for (Json::ArrayIndex i = 0; i < count; ++i)
    Join(text, i + 1 == count ? " or " : ", ", ValueText(names[i]));
  return text;
}

std::string OnlyChoiceText(const Json::Value& choice) {
  const std::string always = "always " + choice["const"].asString();
  const std::string title = Title(choice);
  return title == always ? always : always + ", " + title;
}

/// The values that there are, with their meanings; empty where all of the type are.
std::string ValuesText(const Json::Value& schema) {
  if (schema.isMember("enum")) return NamesText(schema["enum"]);
  if (schema["oneOf"].size() == 1) return OnlyChoiceText(schema["oneOf"][0U]);
  std::string text;
  for (const char* choices : {"oneOf", "anyOf"}) {
    for (const Json::Value& choice : schema[choices]) {
      const bool is_any_other = !choice.isMember("const");
      Join(text, ", ", (is_any_other ? "otherwise" : ValueText(choice["const"])) + " " + Title(choice));
    }
  }
  if (!text.empty() || !schema.isMember("minimum")) return text;
  const bool is_any_number = schema["minimum"].asInt() == Json::Value::minInt;
  return is_any_number ? "" : schema["minimum"].asString() + " to " + schema["maximum"].asString();
}

/// How many entries an array has; empty where any number will do.
std::string CountText(const Json::Value& schema) {
  const bool has_most = schema.isMember("maxItems");
  const std::string least = schema["minItems"].asString();
  const std::string most = schema["maxItems"].asString();
  if (has_most && most == "0") return "";  // the description says so
  if (has_most && schema.isMember("minItems")) return least == most ? least : least + " to " + most;
  if (has_most) return "at most " + most;
  return schema.isMember("minItems") ? "at least " + least : "";
}

std::string MeaningText(const Json::Value& schema) {
  std::string text = Title(schema);
  std::string values = ValuesText(schema["type"] == "array" ? schema["items"] : schema);
  if (schema["type"] == "array" && !CountText(schema).empty()) Join(values, "; ", CountText(schema));
  if (!values.empty()) text += ": " + values;
  if (schema["writeOnly"].asBool()) text += " (a secret)";
  if (schema.isMember("description")) text += ". " + schema["description"].asString();
  return text;
}

/// Writes the tables of one document.
class Tables {
 public:
  explicit Tables(const Json::Value& document) : document_(document) {}

  /// The table of one kind of object, then those of the objects that its arrays hold.
  void Add(const Json::Value& object) {
    const std::vector<std::string> repeated = RepeatedIn(object);
    if (!repeated.empty()) {
      text_ +=
          "\nBeside these members it has, for all bands, every member of the table that follows this one; "
          "its\n"
          "`frequency` is 0.\n";
    }
    text_ += "\n| Member | Type | Meaning |\n|---|---|---|\n";
    std::vector<const Json::Value*> inner;
    AddRows(object, "", repeated, inner);
    for (const Json::Value* const entry : inner) {
      if (std::find(told_.begin(), told_.end(), entry) != told_.end()) continue;
      told_.push_back(entry);
      text_ += "\n### " + Title(*entry) + "\n";
      Add(*entry);
    }
  }

  const std::string& Text() const { return text_; }

 private:
  /// The members of the objects in an array of this object, where it has all of them itself, too.
  std::vector<std::string> RepeatedIn(const Json::Value& object) const {
    for (const Json::Value& property : object["properties"]) {
      std::vector<std::string> names = Resolved(document_, property["items"])["properties"].getMemberNames();
      const bool has_all = std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        return object["properties"].isMember(name);
      });
      if (!names.empty() && has_all) return names;
    }
    return {};
  }

  void AddRows(const Json::Value& object, const std::string& prefix, const std::vector<std::string>& left_out,
               std::vector<const Json::Value*>& inner) {
    // The properties have no order; the required ones, which are all, have the documents'.
    for (const Json::Value& required : object["required"]) {
      const std::string name = required.asString();
      if (std::find(left_out.begin(), left_out.end(), name) != left_out.end()) continue;
      const Json::Value& property = Resolved(document_, object["properties"][name]);
      text_ += "| " + Quoted(prefix + name) + " | " + TypeText(document_, property) + " | " +
               MeaningText(property) + " |\n";
      if (property["type"] == "object") AddRows(property, prefix + name + ".", {}, inner);
      const Json::Value& entry = Resolved(document_, property["items"]);
      if (entry["type"] == "object" && property["maxItems"] != 0) inner.push_back(&entry);
    }
  }

  const Json::Value& document_;
  std::string text_;
  std::vector<const Json::Value*> told_{};
};

std::string DocumentText(const Json::Value& document) {
  std::string text = "\n## " + Title(document) + "\n\n" + document["description"].asString() + ".\n";
  const bool is_array = document["type"] == "array";
  if (is_array) text += "An array of " + CountText(document) + " objects.\n";
  const Json::Value& entry =
      document.isMember("prefixItems") ? document["prefixItems"][0U] : document["items"];
  Tables tables(document);
  tables.Add(is_array ? Resolved(document, entry) : document);
  return text + tables.Text();
}

}  // namespace

std::string DocumentsReference() {
  std::string text =
      "# The documents\n\n"
      "All five stand in `/usr/kelp/etc/wifi/`, JSON indented with one tab, mode 0600. The order of members "
      "carries no meaning.\n"
      "Texts are bytes: an SSID in an old encoding stands there byte for byte as the radio had it, so a "
      "document is UTF-8\n"
      "only where the household's names were. Enumerations are numbers, except models and countries, which "
      "are names.\n"
      "Numbers are whole ones of 32 bits, with a sign. Every member is always there, and no other is.\n\n"
      "The same for programs, as JSON Schema 2020-12: [schemas/](schemas), which "
      "`scripts/validate-documents`\n"
      "holds documents to (where one is no UTF-8 it is read as Latin-1). This page is what\n"
      "`devicelab describe documents` prints.\n";
  for (const char* document : {"global", "misc", "radio", "wps", "network"}) {
    text += DocumentText(Schema(document));
  }
  return text;
}

}  // namespace lab
