#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace lab::page {

/// The value as JSON text that may stand in a script element of a page whatever texts the value holds: ASCII
/// alone, without "<", ">" and "&", so that nothing in it ends the element or begins a comment. Texts in it
/// are as Printable makes them: a byte that is no UTF-8 is the four characters "\xe9", a mark that turns the
/// direction of writing the six "\u202e".
std::string ScriptData(const Json::Value& value);

/// The value with every text and name Printable.
Json::Value PrintableJson(const Json::Value& value);

}  // namespace lab::page
