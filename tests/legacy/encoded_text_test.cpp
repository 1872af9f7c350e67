#include "legacy/encoded_text.h"

#include <gtest/gtest.h>
#include <sodium.h>

#include <string>

#include "lab/images/private_root.h"
#include "lab/images/secret_seal.h"
#include "lab/runs/in_root.h"
#include "tests/legacy/logged.h"

namespace KELP::Wifi::Updater {
namespace {

using namespace std::string_literals;
using testing_support::LoggedErrors;
using testing_support::Messages;

constexpr const char* kKeyFile = "/usr/kelp/etc/secret.key";
constexpr const char* kKey = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";

std::string Encode(const std::string& bytes) {
  std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), reinterpret_cast<const unsigned char*>(bytes.data()),
                    bytes.size(), sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();
  return text;
}

class EncodedText : public ::testing::Test {
 protected:
  EncodedText() { device_.Write(kKeyFile, kKey); }

  void ExpectDecoded(const std::string& stored, const std::string& text) {
    lab::InRoot inside(device_);
    EXPECT_EQ(DecodeBase64Text(stored), text);
    EXPECT_EQ(LoggedErrors(inside), Messages{});
  }
  void ExpectNotDecoded(const std::string& stored) {
    lab::InRoot inside(device_);
    EXPECT_EQ(DecodeBase64Text(stored), "");
    EXPECT_EQ(LoggedErrors(inside),
              (Messages{"kelpwifiupdater:575 Failed to decode base64 string: " + stored}));
  }
  void ExpectDecrypted(const std::string& stored, const std::string& plain) {
    lab::InRoot inside(device_);
    EXPECT_EQ(DecryptSsid(stored), plain);
    EXPECT_EQ(LoggedErrors(inside), Messages{});
  }
  void ExpectNotDecrypted(const std::string& stored) {
    lab::InRoot inside(device_);
    EXPECT_EQ(DecryptSsid(stored), "");
    EXPECT_EQ(LoggedErrors(inside), (Messages{"kelpwifiupdater:589 Failed to decrypt ssid with " + stored}));
  }

  lab::PrivateRoot device_;
};

TEST_F(EncodedText, SsidIsDecoded) {
  ExpectDecoded("S2VscE5ldA==", "KelpNet");
  ExpectDecoded("Y2Fmw6k=", "caf\xC3\xA9");
}

TEST_F(EncodedText, EmptySsidIsEmptyWithoutALine) {
  ExpectDecoded("", "");
}

TEST_F(EncodedText, SsidMayHoldAnyBytes) {
  ExpectDecoded("/////////////////////////////////////////w==", std::string(31, '\xFF'));
  ExpectDecoded(Encode("\"q\\b\"\n\x01\x7F\x80"), "\"q\\b\"\n\x01\x7F\x80");
}

TEST_F(EncodedText, EmbeddedNULCutsTheSsidWithoutALine) {
  ExpectDecoded("YQBi", "a");
  ExpectDecoded("AGFi", "");
  ExpectDecoded("YWIA", "ab");
  ExpectDecoded("AAAA", "");
}

TEST_F(EncodedText, SsidThatIsNoBase64IsEmptyWithALineThatShowsIt) {
  for (const auto* stored : {"KelpNet!", "S2VscE5ldA", "S2VscE5ldA=", "S2Vsc E5ldA==", "S2VscE5ldA==\r", " ",
                             "=", "%s%n%d", "\xFF\xFE"}) {
    ExpectNotDecoded(stored);
  }
}

TEST_F(EncodedText, SsidIsTakenByItsLengthAndNotUpToANUL) {
  lab::InRoot inside(device_);
  EXPECT_EQ(DecodeBase64Text("S2VscE5ldA==\0"s), "");
  EXPECT_EQ(LoggedErrors(inside).size(), 1U);
}

TEST_F(EncodedText, SsidOfUpTo8192BytesIsDecodedWhole) {
  for (const std::size_t size : {8189U, 8190U, 8191U, 8192U}) {
    std::string text(size, 's');
    text.back() = 'e';
    ExpectDecoded(Encode(text), text);
  }
}

TEST_F(EncodedText, SsidOfMoreThan8192BytesIsEmptyWithALine) {
  ExpectNotDecoded(Encode(std::string(8193, 's')));
  ExpectNotDecoded(Encode(std::string(20'000, 's')));
}

TEST_F(EncodedText, NULInTheLastOf8192BytesCutsThere) {
  std::string text(8192, 's');
  text.back() = '\0';
  ExpectDecoded(Encode(text), std::string(8191, 's'));
}

TEST_F(EncodedText, NothingOfAnEarlierTextStays) {
  ExpectDecoded(Encode("a long earlier text"), "a long earlier text");
  ExpectDecoded(Encode("ab"), "ab");
  ExpectDecoded("", "");
}

TEST_F(EncodedText, SecretIsDecrypted) {
  ExpectDecrypted(lab::SealSecret("correct horse", kKey), "correct horse");
  ExpectDecrypted(lab::SealSecret("\xFF\"\\\n", kKey), "\xFF\"\\\n");
}

TEST_F(EncodedText, SealedEmptySecretIsEmptyWithoutALine) {
  ExpectDecrypted(lab::SealSecret("", kKey), "");
}

TEST_F(EncodedText, EmptyStoredSecretLogsItsLine) {
  ExpectNotDecrypted("");
}

TEST_F(EncodedText, SecretThatCannotBeDecryptedIsEmptyWithALineThatShowsTheStoredText) {
  ExpectNotDecrypted("no base64 %s%n");
  ExpectNotDecrypted("S2VscE5ldA==");
  ExpectNotDecrypted(lab::SealSecret("secret", std::string(64, 'a')));
  ExpectNotDecrypted(lab::SealSecret("sec\0ret"s, kKey));
  device_.Remove(kKeyFile);
  ExpectNotDecrypted(lab::SealSecret("secret", kKey));
}

TEST_F(EncodedText, SecretOfUpTo8191BytesIsDecryptedAndNoLongerOne) {
  for (const std::size_t size : {8190U, 8191U}) {
    const std::string plain(size, 'p');
    ExpectDecrypted(lab::SealSecret(plain, kKey), plain);
  }
  for (const std::size_t size : {8192U, 8193U, 20'000U}) {
    ExpectNotDecrypted(lab::SealSecret(std::string(size, 'p'), kKey));
  }
}

TEST_F(EncodedText, LineNeverShowsThePlainText) {
  const std::string stored = lab::SealSecret("visible\0secret"s, kKey);
  lab::InRoot inside(device_);
  EXPECT_EQ(DecryptSsid(stored), "");
  for (const std::string& message : LoggedErrors(inside)) {
    EXPECT_EQ(message.find("visible"), std::string::npos) << message;
  }
}

}  // namespace
}  // namespace KELP::Wifi::Updater
