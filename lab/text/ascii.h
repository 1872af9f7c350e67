#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace lab {

/// The text with the letters of ASCII in lower case, and all other bytes as they are.
inline std::string ToLowerAscii(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
  });
  return lower;
}

}  // namespace lab
