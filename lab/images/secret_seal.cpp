#include "lab/images/secret_seal.h"

#include <sodium.h>

#include <array>
#include <stdexcept>

#include "lab/text/base64.h"

namespace lab {
namespace {

using Key = std::array<unsigned char, crypto_secretbox_KEYBYTES>;

Key ParseKey(std::string_view hex) {
  while (hex.ends_with('\n') || hex.ends_with('\r')) hex.remove_suffix(1);
  Key key{};
  std::size_t size = 0;
  const char* end = nullptr;
  const int result = sodium_hex2bin(key.data(), key.size(), hex.data(), hex.size(), nullptr, &size, &end);
  if (result != 0 || size != key.size() || end != hex.data() + hex.size()) {
    throw std::invalid_argument("a secret key is 64 hexadecimal digits");
  }
  return key;
}

}  // namespace

std::string SealSecret(std::string_view plain, std::string_view hex_key,
                       std::optional<std::string_view> nonce) {
  if (sodium_init() < 0) throw std::runtime_error("libsodium cannot be initialised");
  Key key = ParseKey(hex_key);

  std::string sealed(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES + plain.size(), '\0');
  auto* const bytes = reinterpret_cast<unsigned char*>(sealed.data());
  if (!nonce) {
    randombytes_buf(bytes, crypto_secretbox_NONCEBYTES);
  } else if (nonce->size() == crypto_secretbox_NONCEBYTES) {
    nonce->copy(sealed.data(), nonce->size());
  } else {
    throw std::invalid_argument("a nonce is 24 bytes");
  }
  crypto_secretbox_easy(bytes + crypto_secretbox_NONCEBYTES,
                        reinterpret_cast<const unsigned char*>(plain.data()), plain.size(), bytes,
                        key.data());
  sodium_memzero(key.data(), key.size());
  return ToBase64(sealed);
}

}  // namespace lab
