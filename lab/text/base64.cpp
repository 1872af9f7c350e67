#include "lab/text/base64.h"

#include <sodium.h>

#include <algorithm>

namespace lab {

std::string ToBase64(std::string_view bytes) {
  std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), reinterpret_cast<const unsigned char*>(bytes.data()),
                    bytes.size(), sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // its terminator
  return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
  // An older release of the library takes high bytes for digits.
  if (std::ranges::any_of(text, [](unsigned char byte) { return byte > 0x7F; })) return std::nullopt;
  std::string bytes(text.size(), '\0');
  std::size_t size = 0;
  if (sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(),
                        text.size(), nullptr, &size, nullptr, sodium_base64_VARIANT_ORIGINAL) != 0) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace lab
