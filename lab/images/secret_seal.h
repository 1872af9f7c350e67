#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lab {

/// Seals a secret as a device stores it: the standard base64 of a nonce followed by the XSalsa20-Poly1305 box
/// of the text. `hex_key` is the content of the device's /usr/kelp/etc/secret.key: 64 hexadecimal digits,
/// perhaps with a line end behind them. The nonce has 24 bytes, and is a random one unless given. Throws
/// std::invalid_argument for a key or nonce of another form.
std::string SealSecret(std::string_view plain, std::string_view hex_key,
                       std::optional<std::string_view> nonce = std::nullopt);

}  // namespace lab
