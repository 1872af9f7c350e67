#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz {

/// What the code under test is held against: the same rules once more, in the most obvious way and at any
/// price.

/// The pieces between the LFs; one more than there are LFs.
std::vector<std::string> PlainLines(const std::string& text);

/// Key and value of a line; none for a line that starts with one of `comment_bytes` and one without '='.
std::optional<std::pair<std::string, std::string>> PlainEntry(const std::string& line,
                                                              std::string_view comment_bytes);

/// The entries of a key=value text; of two with one key the first.
std::map<std::string, std::string> PlainEntries(const std::string& text);

/// A decimal number as std::stoi takes it; none where std::stoi throws.
std::optional<std::int32_t> PlainNumber(const std::string& text);

/// The bytes before the first NUL.
std::string UpToNul(const std::string& text);

/// Standard base64 with padding, in both directions; none for a text that PlainEncodeBase64 would not write.
std::string PlainEncodeBase64(const std::string& bytes);
std::optional<std::string> PlainDecodeBase64(const std::string& text);

}  // namespace fuzz
