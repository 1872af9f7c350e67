#pragma once

#include <json/value.h>

#include <string>

namespace KELP::Wifi {

/// The text of `value` as jsoncpp's own writer lays it out with an indentation of one tab: members in byte
/// order, one a line; an array of plain values on one line where that is shorter than 74 bytes. Bytes above
/// 0x7F stand as they are. No newline at the end.
///
/// The library's writer hands every token to a stream, several calls each; for a household's documents that
/// was more work than all the rest of a run together.
std::string ToIndentedText(const Json::Value& value);

}  // namespace KELP::Wifi
