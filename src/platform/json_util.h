#pragma once

#include <json/value.h>

#include <string>

namespace KELP::Wifi::Util::JsonUtil {

/// The document in the file at `path`: strict JSON (no comments, no trailing text, no repeated members), its
/// root an object or an array, nested at most 1000 deep, at most 1 MiB long. Throws a std::runtime_error with
/// the path and the reason when the file is missing, unreadable or malformed.
Json::Value LoadJsonFromFile(const std::string& path);

/// Writes `document` to `path`, indented with one tab, a newline at its end; bytes above 0x7F stand as they
/// are. All or nothing, durable when it returns, mode 0600. Throws as ReplaceFile does.
void SaveJsonToFile(const std::string& path, const Json::Value& document);

/// The member `name` of the object `value`, a string.
/// Throws std::runtime_error naming the member when `value` is no object, lacks it, or it is of another kind.
std::string GetString(const Json::Value& value, const std::string& name);

/// The member `name` of the object `value`, an array. Throws as GetString does.
Json::Value GetArray(const Json::Value& value, const std::string& name);

}  // namespace KELP::Wifi::Util::JsonUtil
