#include "legacy/encoded_text.h"

#include <array>
#include <cstring>
#include <string>

#include "base/log.h"
#include "platform/base64.h"
#include "platform/cipher.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr std::size_t kBufferSize = 8192;

}  // namespace

std::string DecodeBase64Text(const std::string& stored) {
  std::array<unsigned char, kBufferSize> buffer{};
  std::size_t length = buffer.size();
  if (KELPEncodingBase64Decode(stored.data(), stored.size(), buffer.data(), &length) == 0) {
    Log(LOG_ERR, "%s:%d Failed to decode base64 string: %s", 575, stored.c_str());
    return "";
  }
  // A text that fills the buffer has no NUL behind it: the length bounds the search for one.
  const auto* const text = reinterpret_cast<const char*>(buffer.data());
  return {text, ::strnlen(text, length)};
}

std::string DecryptSsid(const std::string& stored) {
  std::array<char, kBufferSize> buffer{};
  if (KLIBCryptSzDecrypt(stored.c_str(), buffer.data(), buffer.size()) == 0) {
    Log(LOG_ERR, "%s:%d Failed to decrypt ssid with %s", 589, stored.c_str());
    return "";
  }
  std::string plain = buffer.data();
  ::explicit_bzero(buffer.data(), plain.size());
  return plain;
}

}  // namespace KELP::Wifi::Updater
