// The cipher of the stored secrets. Input: a byte of flags (below), two of buffer capacity, one of the nonce,
// with kOwnKeyFile one of the key file's length and its bytes, with kTampered two of a place, then the
// secret, which is sealed first unless kStored says that it is the stored text.
#include "platform/cipher.h"

#include <sodium.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "fuzz/support/captured_log.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/plain_text.h"
#include "fuzz/support/private_device.h"
#include "legacy/encoded_text.h"

namespace {

enum Flag : unsigned int {
  kStored = 1,
  kTampered = 2,
  kOwnKeyFile = 4,
  kNoKeyFile = 8,
  kNewlineBehindKey = 16,
  kUpperCaseKey = 32,
};

constexpr const char* kKeyPath = "/usr/kelp/etc/secret.key";
constexpr const char* kKey = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
constexpr const char* kSameKey = "000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F";
constexpr std::size_t kNonceSize = 24;
constexpr std::size_t kTagSize = 16;
constexpr std::size_t kLongestSecret = 8191;
constexpr char kUntouched = 'x';

fuzz::PrivateDevice& Device() {
  static fuzz::PrivateDevice device;
  return device;
}

unsigned char* Bytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

/// The key in a key file; none for a file that no key can be taken from.
std::optional<std::string> PlainKey(std::string file) {
  if (!file.empty() && file.back() == '\n') file.pop_back();
  if (file.size() != 64) return std::nullopt;
  std::string key;
  for (std::size_t place = 0; place < file.size(); place += 2) {
    if (file.find_first_not_of("0123456789abcdefABCDEF", place) != std::string::npos) return std::nullopt;
    key += static_cast<char>(std::stoi(file.substr(place, 2), nullptr, 16));
  }
  return key;
}

std::string Seal(std::string plain, unsigned char nonce_byte) {
  std::string key = PlainKey(kKey).value();
  std::string nonce(kNonceSize, static_cast<char>(nonce_byte));
  std::string box(plain.size() + kTagSize, '\0');
  FUZZ_CHECK(crypto_secretbox_easy(Bytes(box), Bytes(plain), plain.size(), Bytes(nonce), Bytes(key)) == 0);
  return nonce + box;
}

std::optional<std::string> PlainOpen(const std::string& stored, const std::optional<std::string>& key_file,
                                     std::size_t capacity) {
  auto sealed = fuzz::PlainDecodeBase64(fuzz::UpToNul(stored));
  auto key = key_file ? PlainKey(*key_file) : std::nullopt;
  if (!sealed || !key || sealed->size() < kNonceSize + kTagSize) return std::nullopt;
  std::string nonce = sealed->substr(0, kNonceSize);
  std::string box = sealed->substr(kNonceSize);
  std::string plain(box.size() - kTagSize, '\0');
  if (crypto_secretbox_open_easy(Bytes(plain), Bytes(box), box.size(), Bytes(nonce), Bytes(*key)) != 0) {
    return std::nullopt;
  }
  if (plain.find('\0') != std::string::npos || plain.size() >= capacity) return std::nullopt;
  return plain;
}

void CheckCipher(const std::string& stored, const std::optional<std::string>& key_file,
                 std::size_t capacity) {
  // Exactly as large as it says: the sanitizer sees the first byte written behind it.
  const std::unique_ptr<char[]> buffer(new char[capacity]);
  std::fill_n(buffer.get(), capacity, kUntouched);
  const int result = KLIBCryptSzDecrypt(stored.c_str(), buffer.get(), capacity);
  const auto expected = PlainOpen(stored, key_file, capacity);
  FUZZ_CHECK(result == (expected ? 1 : 0));
  if (expected) {
    FUZZ_CHECK(buffer.get() == *expected);
  } else {
    FUZZ_CHECK(std::all_of(buffer.get(), buffer.get() + capacity,
                           [](char byte) { return byte == kUntouched || byte == '\0'; }));
  }
}

void CheckSecret(const std::string& stored, const std::optional<std::string>& key_file) {
  const auto expected = PlainOpen(stored, key_file, kLongestSecret + 1);
  FUZZ_CHECK(KELP::Wifi::Updater::DecryptSsid(stored) == expected.value_or(""));
  const auto log = fuzz::TakeLogLines();
  const std::string message = "kelpwifiupdater:589 Failed to decrypt ssid with " + fuzz::UpToNul(stored);
  FUZZ_CHECK(expected ? log.empty() : fuzz::IsOneError(log, message));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argument_count*/, char*** /*arguments*/) {
  Device();
  return sodium_init() < 0 ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned int flags = input.TakeByte();
  const std::size_t capacity = input.TakeNumber() % (2 * kLongestSecret);
  const unsigned char nonce = input.TakeByte();

  std::optional<std::string> key_file = flags & kUpperCaseKey ? kSameKey : kKey;
  if (flags & kOwnKeyFile) key_file = input.TakeBytes(input.TakeByte());
  if (flags & kNewlineBehindKey) *key_file += '\n';
  if (flags & kNoKeyFile) key_file.reset();

  const std::size_t place = flags & kTampered ? input.TakeNumber() : 0;
  std::string stored = input.TakeRest();
  if (!(flags & kStored)) {
    stored = Seal(stored, nonce);
    if (flags & kTampered) stored[place % stored.size()] ^= static_cast<char>(1U << place % 8);
    stored = fuzz::PlainEncodeBase64(stored);
  }

  const fuzz::PrivateDevice::Entered inside(Device());
  if (key_file) {
    FUZZ_CHECK(fuzz::WriteFile(kKeyPath, *key_file));
  } else {
    ::unlink(kKeyPath);
  }
  CheckCipher(stored, key_file, capacity);
  CheckCipher(stored, key_file, stored.size());  // more than enough
  CheckSecret(stored, key_file);
  return 0;
}
