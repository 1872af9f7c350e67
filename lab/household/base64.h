#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// The bytes that a base64 text (standard alphabet, padded, nothing else in it) stands for.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace lab
