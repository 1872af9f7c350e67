#pragma once

#include <json/value.h>

#include <string>

namespace KELP::Wifi::Util::JsonUtil {

/// The document in the file at `path`, as jsoncpp's strict mode reads it: no text behind it, no repeated
/// members, no lax spellings, its root an object or an array, nested at most 1000 deep; at most 1 MiB long.
/// That mode lets a few texts pass that are no JSON: comments before a member and behind a value, control
/// characters in strings, numbers such as 01; and a NUL behind the document ends it, whatever follows. Bytes
/// that are no UTF-8 stand as they are. Throws a std::runtime_error with the path and the reason when the
/// file is missing, unreadable or malformed.
Json::Value LoadJsonFromFile(const std::string& path);

/// Writes `document` to `path`, indented with one tab, a newline at its end; bytes above 0x7F stand as they
/// are. All or nothing, also after a power cut; durable once its directory is flushed; mode 0600. Throws
/// std::system_error with the path and the cause.
void SaveJsonToFile(const std::string& path, const Json::Value& document);

/// The member `name` of the object `value`, a string.
/// Throws std::runtime_error naming the member when `value` is no object, lacks it, or it is of another kind.
std::string GetString(const Json::Value& value, const std::string& name);

/// The member `name` of the object `value`, an array. Throws as GetString does.
Json::Value GetArray(const Json::Value& value, const std::string& name);

}  // namespace KELP::Wifi::Util::JsonUtil
