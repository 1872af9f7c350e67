#pragma once

#include <string>

namespace KELP::Wifi {

/// How deeply objects and arrays may stand in one another.
inline constexpr std::size_t kDeepestJson = 1000;

/// Throws std::runtime_error, with the place and the reason but nothing of the text, unless `text` is plain
/// JSON as RFC 8259 has it: one document and nothing but blanks around it (a byte order mark before them is
/// passed over), no comments, no control characters in texts, no lax numbers. Narrower than that: the root is
/// an object or an array, at most kDeepestJson levels, every number within the range of a double (what is too
/// small counts as zero), and no escape of half a surrogate pair. Wider: bytes above 0x7F may stand in texts
/// in any order, as names in old encodings have them. Repeated members are not looked for.
void RequirePlainJson(const std::string& text);

}  // namespace KELP::Wifi
