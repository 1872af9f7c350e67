#include "lab/images/secret_seal.h"

#include <gtest/gtest.h>
#include <sodium.h>

#include <stdexcept>
#include <vector>

#include "lab/text/base64.h"

namespace lab {
namespace {

const std::string kKey = "1b27556473e985d462cd51197a9a46c76009549eac6474f206c4ee0844f68389";

std::vector<unsigned char> Decode(const std::string& text) {
  const std::string bytes = FromBase64(text).value();
  return {bytes.begin(), bytes.end()};
}

std::string Open(const std::string& sealed) {
  const auto bytes = Decode(sealed);
  std::vector<unsigned char> key(crypto_secretbox_KEYBYTES);
  sodium_hex2bin(key.data(), key.size(), kKey.data(), kKey.size(), nullptr, nullptr, nullptr);
  std::string plain(bytes.size() - crypto_secretbox_NONCEBYTES - crypto_secretbox_MACBYTES, '\0');
  EXPECT_EQ(crypto_secretbox_open_easy(reinterpret_cast<unsigned char*>(plain.data()),
                                       bytes.data() + crypto_secretbox_NONCEBYTES,
                                       bytes.size() - crypto_secretbox_NONCEBYTES, bytes.data(), key.data()),
            0);
  return plain;
}

TEST(SealSecret, CanBeOpenedWithTheKey) {
  for (const std::string& plain : {std::string(), std::string("birch-Kettle-77"), std::string("\0\xff\n", 3),
                                   std::string(10'000, 'x')}) {
    EXPECT_EQ(Open(SealSecret(plain, kKey)), plain);
  }
}

TEST(SealSecret, PutsTheNonceFirst) {
  const std::string nonce = "123456789012345678901234";
  const std::string sealed = SealSecret("secret", kKey, nonce);
  EXPECT_TRUE(sealed.starts_with("MTIzNDU2Nzg5MDEyMzQ1Njc4OTAxMjM0"));
  EXPECT_EQ(sealed, SealSecret("secret", kKey, nonce));
  EXPECT_EQ(Decode(sealed).size(), 24U + 16U + 6U);
}

TEST(SealSecret, NeverUsesARandomNonceTwice) {
  EXPECT_NE(SealSecret("secret", kKey), SealSecret("secret", kKey));
}

TEST(SealSecret, TakesTheKeyAsItStandsInTheFile) {
  const std::string nonce(24, 'n');
  const std::string sealed = SealSecret("secret", kKey, nonce);
  EXPECT_EQ(SealSecret("secret", kKey + "\n", nonce), sealed);
  EXPECT_EQ(SealSecret("secret", kKey + "\r\n", nonce), sealed);
  std::string upper = kKey;
  for (char& digit : upper) digit = static_cast<char>(std::toupper(digit));
  EXPECT_EQ(SealSecret("secret", upper, nonce), sealed);
}

TEST(SealSecret, RefusesOtherKeysAndNonces) {
  EXPECT_THROW(SealSecret("x", ""), std::invalid_argument);
  EXPECT_THROW(SealSecret("x", kKey.substr(2)), std::invalid_argument);
  EXPECT_THROW(SealSecret("x", kKey + "00"), std::invalid_argument);
  EXPECT_THROW(SealSecret("x", kKey.substr(1)), std::invalid_argument);
  EXPECT_THROW(SealSecret("x", " " + kKey.substr(1)), std::invalid_argument);
  EXPECT_THROW(SealSecret("x", kKey.substr(1) + "g"), std::invalid_argument);
  EXPECT_THROW(SealSecret("x", kKey, "short"), std::invalid_argument);
}

}  // namespace
}  // namespace lab
