#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace lab {

/// The text of docs/schemas/<name>. Throws std::out_of_range for another name.
std::string_view SchemaText(std::string_view name);

/// The schema of a document ("radio"), whole; members that refer to those of another object have what is said
/// there. Throws std::out_of_range where there is none.
const Json::Value& Schema(const std::string& document);

/// A part of that schema, or what it refers to ("#/$defs/radio").
const Json::Value& Resolved(const Json::Value& document, const Json::Value& schema);

/// What the schema of a document ("radio") says of one kind of object in it: its properties by their names,
/// those of "radio" for "radio", of "feature" and "rotation" for "network", of the document itself for "".
const Json::Value& Properties(const std::string& document, const std::string& object);

/// The title of a property: "Security".
std::string Title(const Json::Value& property);

/// What a value means, by the titles of a property's constants: "WPA2/WPA3" for 7. Empty where the schema has
/// no words for it.
std::string Meaning(const Json::Value& property, const Json::Value& value);

/// "2.4 GHz" and so on; "all bands" for 0, "radio 7" for a number that none has.
std::string RadioName(int frequency);

}  // namespace lab
