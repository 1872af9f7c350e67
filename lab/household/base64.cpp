#include "lab/household/base64.h"

#include <sodium.h>

#include <algorithm>

namespace lab {

std::optional<std::string> DecodeBase64(std::string_view text) {
  const auto is_high = [](unsigned char byte) { return byte > 0x7F; };
  // The decoder of an older release of the library takes high bytes for digits.
  if (std::ranges::any_of(text, is_high)) return std::nullopt;
  std::string bytes(text.size(), '\0');
  std::size_t size = 0;
  const int result =
      sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(),
                        text.size(), nullptr, &size, nullptr, sodium_base64_VARIANT_ORIGINAL);
  if (result != 0) return std::nullopt;
  bytes.resize(size);
  return bytes;
}

}  // namespace lab
