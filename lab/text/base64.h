#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// Standard base64 with padding.
std::string ToBase64(std::string_view bytes);

/// The bytes that a base64 text stands for. None for anything that ToBase64 would not write.
std::optional<std::string> FromBase64(std::string_view text);

}  // namespace lab
