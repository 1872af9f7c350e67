// The base64 decoder, bare and as the SSID reader uses it. Input: two bytes of buffer capacity, the bytes.
#include "platform/base64.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "fuzz/support/captured_log.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/plain_text.h"
#include "legacy/encoded_text.h"

namespace {

constexpr std::size_t kLongestSsid = 8192;

std::optional<std::string> Decode(const std::string& text, std::size_t capacity) {
  // Exactly as large as it says: the sanitizer sees the first byte written behind it.
  const std::unique_ptr<unsigned char[]> buffer(new unsigned char[capacity]);
  std::size_t length = capacity;
  const int result = KELPEncodingBase64Decode(text.data(), text.size(), buffer.get(), &length);
  FUZZ_CHECK(result == 0 || result == 1);
  if (result == 0) return std::nullopt;
  FUZZ_CHECK(length <= capacity);
  return std::string(reinterpret_cast<const char*>(buffer.get()), length);
}

void CheckDecoder(const std::string& text, std::size_t capacity) {
  const std::optional<std::string> bytes = fuzz::PlainDecodeBase64(text);
  const auto expected = [&](std::size_t limit) {
    return bytes && bytes->size() <= limit ? bytes : std::nullopt;
  };
  FUZZ_CHECK(Decode(text, capacity) == expected(capacity));
  if (!bytes) return;
  FUZZ_CHECK(Decode(text, bytes->size()) == bytes);
  if (!bytes->empty()) FUZZ_CHECK(!Decode(text, bytes->size() - 1));
}

void CheckSsid(const std::string& text) {
  const std::optional<std::string> bytes = fuzz::PlainDecodeBase64(text);
  const bool is_ssid = bytes && bytes->size() <= kLongestSsid;
  FUZZ_CHECK(KELP::Wifi::Updater::DecodeBase64Text(text) == (is_ssid ? fuzz::UpToNul(*bytes) : ""));
  const auto log = fuzz::TakeLogLines();
  const std::string message = "kelpwifiupdater:575 Failed to decode base64 string: " + fuzz::UpToNul(text);
  FUZZ_CHECK(is_ssid ? log.empty() : fuzz::IsOneError(log, message));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::size_t capacity = input.TakeNumber();
  const std::string bytes = input.TakeRest();
  const std::string encoded = fuzz::PlainEncodeBase64(bytes);

  CheckDecoder(bytes, capacity);
  CheckSsid(bytes);
  CheckDecoder(encoded, capacity);
  CheckSsid(encoded);
  FUZZ_CHECK(Decode(encoded, bytes.size()) == bytes);
  return 0;
}
