#pragma once

#include <json/value.h>

#include <string>

namespace KELP::Wifi::Util::JsonUtil {

/// The document in the file at `path`: plain JSON as RFC 8259 has it, whatever release of jsoncpp reads it.
/// Its root is an object or an array, at most 1000 of those stand in one another, it is at most 1 MiB long,
/// and nothing but blanks stands around it, no NUL and no comment; a byte order mark at its very beginning is
/// passed over. No member comes twice in an object. Numbers are within the range of a double; what is too
/// small for one is zero. Bytes above 0x7F stand in texts as they are, UTF-8 or not; an escape of half a
/// surrogate pair is refused. Throws a std::runtime_error with the path and the reason when the file is
/// missing, unreadable or malformed.
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
