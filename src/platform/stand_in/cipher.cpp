#include "platform/cipher.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "base/unique_fd.h"
#include "platform/base64.h"

namespace {

using KELP::Wifi::RetryInterrupted;
using KELP::Wifi::UniqueFd;

constexpr const char* kKeyFile = "/usr/kelp/etc/secret.key";
constexpr std::size_t kOverhead = crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;

/// Bytes that are wiped when they go out of scope.
template <std::size_t Size>
struct Wiped : std::array<unsigned char, Size> {
  Wiped() = default;
  Wiped(const Wiped&) = delete;
  Wiped& operator=(const Wiped&) = delete;
  ~Wiped() { sodium_memzero(this->data(), Size); }
};

using Key = Wiped<crypto_secretbox_KEYBYTES>;

/// Opening a box draws no random numbers; only the library's start does, for allocations that are not made
/// here. Its own source waits for the kernel's entropy, in the middle of a boot, and aborts the process where
/// there is none to be had. This one is never to be used for making a secret.
void FillIfPossible(void* buffer, std::size_t size) {
  if (::getrandom(buffer, size, GRND_NONBLOCK) < 0) std::memset(buffer, 0, size);
}

const char* SourceName() {
  return "kernel, never waiting";
}

std::uint32_t DrawNumber() {
  std::uint32_t number = 0;
  FillIfPossible(&number, sizeof number);
  return number;
}

bool InitialiseLibrary() {
  static randombytes_implementation source{SourceName, DrawNumber, nullptr, nullptr, FillIfPossible, nullptr};
  return randombytes_set_implementation(&source) == 0 && sodium_init() >= 0;
}

bool ReadKey(Key& key) {
  const UniqueFd file(
      RetryInterrupted([] { return ::open(kKeyFile, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
  struct stat status {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;

  constexpr std::size_t kDigits = 2 * crypto_secretbox_KEYBYTES;
  Wiped<kDigits + 2> text;  // a newline, and one byte more to see that nothing follows it
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t got =
        RetryInterrupted([&] { return ::read(file.Get(), text.data() + filled, text.size() - filled); });
    if (got < 0) return false;
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  const bool has_newline = filled == kDigits + 1 && text[kDigits] == '\n';
  if (filled != kDigits && !has_newline) return false;

  const auto* digits = reinterpret_cast<const char*>(text.data());
  std::size_t length = 0;
  const char* end = digits;
  return sodium_hex2bin(key.data(), key.size(), digits, kDigits, nullptr, &length, &end) == 0 &&
         length == key.size() && end == digits + kDigits;
}

}  // namespace

int KLIBCryptSzDecrypt(const char* stored, char* buffer, std::size_t capacity) {
  if (capacity == 0 || !InitialiseLibrary()) return 0;

  // Nothing longer than this can fit into the buffer, so nothing longer is decoded.
  std::size_t length = kOverhead + capacity - 1;
  const std::unique_ptr<unsigned char[]> sealed(new (std::nothrow) unsigned char[length]);
  if (sealed == nullptr ||
      KELPEncodingBase64Decode(stored, std::strlen(stored), sealed.get(), &length) == 0 ||
      length < kOverhead) {
    return 0;
  }

  Key key;
  if (!ReadKey(key)) return 0;
  auto* const plain = reinterpret_cast<unsigned char*>(buffer);
  const unsigned char* const nonce = sealed.get();
  const unsigned char* const box = nonce + crypto_secretbox_NONCEBYTES;
  if (crypto_secretbox_open_easy(plain, box, length - crypto_secretbox_NONCEBYTES, nonce, key.data()) != 0) {
    return 0;
  }
  const std::size_t plain_length = length - kOverhead;
  if (std::memchr(buffer, '\0', plain_length) != nullptr) {
    sodium_memzero(buffer, plain_length);
    return 0;
  }
  buffer[plain_length] = '\0';
  return 1;
}
