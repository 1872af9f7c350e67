#include "platform/cipher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "lab/images/private_root.h"
#include "lab/images/secret_seal.h"
#include "lab/runs/in_root.h"
#include "tests/support/without_file_privileges.h"

namespace {

using namespace std::string_literals;

constexpr const char* kKeyFile = "/usr/kelp/etc/secret.key";
const std::string kKey = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1eff";
const std::string kOtherKey = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1efe";

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

/// What the cipher writes into a heap block of exactly `capacity` bytes, up to its NUL; none when it gives 0.
std::optional<std::string> Open(const std::string& stored, std::size_t capacity = 8192) {
  const auto buffer = std::make_unique<char[]>(capacity);
  std::fill_n(buffer.get(), capacity, '\x5A');
  const int result = KLIBCryptSzDecrypt(stored.c_str(), buffer.get(), capacity);
  EXPECT_TRUE(result == 0 || result == 1) << result;
  if (result == 0) return std::nullopt;
  const auto* const end = std::find(buffer.get(), buffer.get() + capacity, '\0');
  EXPECT_NE(end, buffer.get() + capacity) << "no NUL behind the plain text";
  return std::string(buffer.get(), static_cast<std::size_t>(end - buffer.get()));
}

class Cipher : public ::testing::Test {
 protected:
  Cipher() { device_.Write(kKeyFile, kKey + "\n"); }

  /// What the cipher makes of `stored` on a device whose key file holds `key_text`.
  std::optional<std::string> OpenWithKey(const std::string& key_text, const std::string& stored) {
    device_.Write(kKeyFile, key_text);
    const lab::InRoot inside(device_);
    return Open(stored);
  }

  lab::PrivateRoot device_;
};

TEST_F(Cipher, OpensWhatWasSealed) {
  const std::string stored = lab::SealSecret("correct horse battery staple", kKey);
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(stored), "correct horse battery staple");
}

TEST_F(Cipher, OpensASecretThatWasSealedElsewhere) {
  // Sealed by libsodium alone, with the nonce a0 a1 ... b7.
  const std::string stored =
      "oKGio6SlpqeoqaqrrK2ur7CxsrO0tba3r9TEb8dQ/6PpwmdvyCd1hB2FzxSoMjMxNcXt1MTTi6QNv9Xi";
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(stored), "gr\xC3\xBC\xC3\x9F dich, Nachbar");
}

TEST_F(Cipher, OpensTheEmptyPlainText) {
  const std::string stored = lab::SealSecret("", kKey);
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(stored), "");
  EXPECT_EQ(Open(stored, 1), "");
}

TEST_F(Cipher, OpensEveryByteButNUL) {
  std::string plain;
  for (int byte = 1; byte < 256; ++byte) plain += static_cast<char>(byte);
  const std::string stored = lab::SealSecret(plain, kKey);
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(stored), plain);
}

TEST_F(Cipher, RefusesTheEmptyStoredText) {
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(""), std::nullopt);
}

TEST_F(Cipher, RefusesAnotherKeysSecret) {
  const std::string stored = lab::SealSecret("secret", kOtherKey);
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(stored), std::nullopt);
}

TEST_F(Cipher, RefusesEveryTamperedCharacter) {
  const std::string stored = lab::SealSecret("secret", kKey);
  const lab::InRoot inside(device_);
  ASSERT_EQ(Open(stored), "secret");
  for (std::size_t place = 0; place < stored.size(); ++place) {
    std::string tampered = stored;
    tampered[place] = tampered[place] == 'A' ? 'B' : 'A';
    EXPECT_EQ(Open(tampered), std::nullopt) << place;
  }
}

TEST_F(Cipher, RefusesEveryCutText) {
  const std::string stored = lab::SealSecret("secret", kKey);
  const lab::InRoot inside(device_);
  for (std::size_t length = 0; length < stored.size(); ++length) {
    EXPECT_EQ(Open(stored.substr(0, length)), std::nullopt) << length;
  }
}

TEST_F(Cipher, RefusesTextsShorterThanNonceAndTag) {
  // 24 bytes of nonce and 16 of tag are 40: 39 zeros are 52 characters of base64, and so on down.
  const lab::InRoot inside(device_);
  for (const std::size_t groups : {1U, 8U, 13U}) EXPECT_EQ(Open(std::string(4 * groups, 'A')), std::nullopt);
}

TEST_F(Cipher, RefusesTextsAroundTheBase64) {
  const std::string stored = lab::SealSecret("secret", kKey);
  const lab::InRoot inside(device_);
  for (const auto& text :
       {stored + "\n", stored + " ", " " + stored, stored + "A", stored + "AAAA", stored + "=",
        stored.substr(0, 8) + "\n" + stored.substr(8), "\"" + stored + "\"", "secret"s, "\xFF"s}) {
    EXPECT_EQ(Open(text), std::nullopt) << text;
  }
}

TEST_F(Cipher, RefusesPlainTextThatHoldsANUL) {
  for (const auto& plain : {"a\0b"s, "\0"s, "\0a"s, "a\0"s}) {
    const std::string stored = lab::SealSecret(plain, kKey);
    const lab::InRoot inside(device_);
    EXPECT_EQ(Open(stored), std::nullopt);
  }
}

TEST_F(Cipher, LeavesNoPlainTextBehindWhenItRefusesOne) {
  const std::string stored = lab::SealSecret("visible\0rest"s, kKey);
  const lab::InRoot inside(device_);
  std::string buffer(64, '\x5A');
  ASSERT_EQ(KLIBCryptSzDecrypt(stored.c_str(), buffer.data(), buffer.size()), 0);
  EXPECT_EQ(buffer.find("visible"), std::string::npos);
  EXPECT_EQ(buffer.find("rest"), std::string::npos);
}

class CipherCapacity : public Cipher, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(CipherCapacity, HoldsThePlainTextTogetherWithItsNUL) {
  const std::size_t capacity = GetParam();
  for (const std::size_t size : {capacity - 2, capacity - 1, capacity, capacity + 1}) {
    if (size > capacity + 1) continue;  // one byte of capacity leaves none for two less
    std::string plain(size, 'p');
    for (std::size_t i = 0; i < size; ++i) plain[i] = static_cast<char>('!' + i % 90);
    const std::string stored = lab::SealSecret(plain, kKey);
    const lab::InRoot inside(device_);
    const auto opened = Open(stored, capacity);
    if (size < capacity) {
      EXPECT_EQ(opened, plain) << size;
    } else {
      EXPECT_EQ(opened, std::nullopt) << size;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, CipherCapacity, ::testing::Values(1, 2, 3, 16, 8190, 8191, 8192, 8193));

TEST_F(Cipher, PlainTextsAroundTheLargestBuffer) {
  for (const std::size_t size : {8190U, 8191U}) {
    const std::string plain(size, 'p');
    const std::string stored = lab::SealSecret(plain, kKey);
    const lab::InRoot inside(device_);
    EXPECT_EQ(Open(stored, 8192), plain) << size;
  }
  for (const std::size_t size : {8192U, 8193U, 20'000U}) {
    const std::string stored = lab::SealSecret(std::string(size, 'p'), kKey);
    const lab::InRoot inside(device_);
    EXPECT_EQ(Open(stored, 8192), std::nullopt) << size;
  }
}

TEST_F(Cipher, WritesNothingBehindTheCapacity) {
  for (const std::size_t size : {15U, 16U, 17U, 40U}) {
    const std::string stored = lab::SealSecret(std::string(size, 'p'), kKey);
    const lab::InRoot inside(device_);
    std::string guarded(64, '\x5A');
    KLIBCryptSzDecrypt(stored.c_str(), guarded.data(), 16);
    EXPECT_EQ(guarded.substr(16), std::string(48, '\x5A')) << size;
  }
}

TEST_F(Cipher, NothingFitsIntoNoCapacity) {
  const std::string stored = lab::SealSecret("", kKey);
  const lab::InRoot inside(device_);
  char guard = '\x5A';
  EXPECT_EQ(KLIBCryptSzDecrypt(stored.c_str(), &guard, 0), 0);
  EXPECT_EQ(guard, '\x5A');
}

TEST_F(Cipher, KeyMayEndWithOneNewlineOrNone) {
  const std::string stored = lab::SealSecret("secret", kKey);
  EXPECT_EQ(OpenWithKey(kKey, stored), "secret");
  EXPECT_EQ(OpenWithKey(kKey + "\n", stored), "secret");
  EXPECT_EQ(OpenWithKey(kKey + "\n\n", stored), std::nullopt);
}

TEST_F(Cipher, KeyMayBeSpelledInUpperCase) {
  const std::string stored = lab::SealSecret("secret", kKey);
  EXPECT_EQ(OpenWithKey(Upper(kKey), stored), "secret");
}

TEST_F(Cipher, RefusesAMalformedKey) {
  const std::string stored = lab::SealSecret("secret", kKey);
  const std::string digits = kKey.substr(0, 62);
  for (const auto& key : {""s,
                          "\n"s,
                          digits,
                          digits + "f",
                          digits + "f\n",
                          kKey + "0",
                          kKey + "0\n",
                          kKey + "00",
                          kKey + kKey,
                          kKey + "\r\n",
                          kKey + "\r",
                          kKey + " ",
                          kKey + "\n0",
                          " " + kKey,
                          "\n" + kKey,
                          digits + "fg",
                          digits + " f",
                          digits + "f ",
                          "0x" + kKey,
                          "0x" + digits,
                          digits + "f\0"s,
                          kKey + "\0"s,
                          kKey.substr(0, 32) + ":" + kKey.substr(32),
                          "gg" + digits}) {
    EXPECT_EQ(OpenWithKey(key, stored), std::nullopt) << key;
  }
}

TEST_F(Cipher, RefusesWithoutAReadableKeyFile) {
  const std::string stored = lab::SealSecret("secret", kKey);
  device_.Remove(kKeyFile);
  {
    const lab::InRoot inside(device_);
    EXPECT_EQ(Open(stored), std::nullopt);
  }
  device_.MakeDirectory(kKeyFile);
  {
    const lab::InRoot inside(device_);
    EXPECT_EQ(Open(stored), std::nullopt);
  }
  device_.Remove(kKeyFile);
  device_.MakeFifo(kKeyFile);
  {
    const lab::InRoot inside(device_);
    EXPECT_EQ(Open(stored), std::nullopt);
  }
  device_.Remove(kKeyFile);
  device_.Write(kKeyFile, kKey, 0000);
  const lab::InRoot inside(device_);
  const testing_support::WithoutFilePrivileges ordinary;
  EXPECT_EQ(Open(stored), std::nullopt);
}

TEST_F(Cipher, KeyThatCannotBeReadIsNotTakenForOneOfZeros) {
  const std::string opened = lab::SealSecret("opened before", kKey);
  const std::string of_zeros = lab::SealSecret("of no key", std::string(64, '0'));
  const lab::InRoot inside(device_);
  ASSERT_EQ(Open(opened), "opened before");  // what is wiped behind it are zeros
  {
    device_.SetMode(kKeyFile, 0000);
    const testing_support::WithoutFilePrivileges ordinary;
    EXPECT_EQ(Open(of_zeros), std::nullopt);
  }
  device_.Remove(kKeyFile);
  EXPECT_EQ(Open(of_zeros), std::nullopt);
  device_.Write(kKeyFile, "no key");
  EXPECT_EQ(Open(of_zeros), std::nullopt);
}

TEST_F(Cipher, FIFOIntoWhichSomebodyWroteTheKeyIsNoKeyFile) {
  const std::string stored = lab::SealSecret("secret", kKey);
  device_.Remove(kKeyFile);
  device_.MakeFifo(kKeyFile);
  const lab::InRoot inside(device_);
  const int reader = ::open(kKeyFile, O_RDONLY | O_NONBLOCK | O_CLOEXEC);  // keeps what is written
  const int writer = ::open(kKeyFile, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  ASSERT_EQ(::write(writer, kKey.data(), kKey.size()), static_cast<ssize_t>(kKey.size()));
  ::close(writer);  // the whole key, and an end behind it, as in a file
  EXPECT_EQ(Open(stored), std::nullopt);
  ::close(reader);
}

TEST_F(Cipher, KeyIsReadAnewForEachSecret) {
  const std::string stored = lab::SealSecret("secret", kKey);
  EXPECT_EQ(OpenWithKey(kKey, stored), "secret");
  EXPECT_EQ(OpenWithKey(kOtherKey, stored), std::nullopt);
  EXPECT_EQ(OpenWithKey(kKey, stored), "secret");
  device_.Remove(kKeyFile);
  const lab::InRoot inside(device_);
  EXPECT_EQ(Open(stored), std::nullopt);
}

}  // namespace
