// What a core dump or a swapped page could show: once a secret is open, nothing of the device's key is left
// in the process's memory.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/images/secret_seal.h"
#include "lab/runs/in_root.h"
#include "lab/runs/program_run.h"
#include "platform/cipher.h"
#include "tests/support/child_process.h"

namespace {

constexpr char kMask = '\x5A';

/// This process may only hold the key in this form, or it would find what it put there itself.
std::string Masked(std::string text) {
  for (char& byte : text) byte ^= kMask;
  return text;
}

/// This process's memory, also from inside a root without /proc.
class OwnMemory {
 public:
  bool Holds(const std::string& masked) {
    std::string line;
    std::vector<char> bytes;
    regions_.clear();
    regions_.seekg(0);
    bool found = false;
    while (std::getline(regions_, line)) {
      const auto [begin, end, mode] = Parse(line);
      if (!mode.starts_with("rw")) continue;
      bytes.resize(end - begin);
      const ssize_t got = ::pread(bytes_.Get(), bytes.data(), bytes.size(), static_cast<off_t>(begin));
      if (got <= 0) continue;
      const auto last = bytes.begin() + got;
      found |= std::search(bytes.begin(), last, masked.begin(), masked.end(),
                           [](char byte, char wanted) { return (byte ^ kMask) == wanted; }) != last;
    }
    return found;
  }

 private:
  struct Region {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::string mode;
  };

  static Region Parse(const std::string& line) {
    Region region;
    char dash = 0;
    std::istringstream(line) >> std::hex >> region.begin >> dash >> region.end >> region.mode;
    return region;
  }

  std::ifstream regions_{"/proc/self/maps"};
  lab::Descriptor bytes_{::open("/proc/self/mem", O_RDONLY | O_CLOEXEC)};
};

/// Gives the device a key that this process never sees, and the masked digits of it, behind them a secret
/// that is sealed with it.
std::string GiveKey(lab::PrivateRoot& device) {
  return testing_support::InChild([&] {
    std::random_device random;
    std::string digits;
    while (digits.size() < 64) digits += "0123456789abcdef"[random() % 16];
    device.Write("/usr/kelp/etc/secret.key", digits + "\n");
    return Masked(digits) + lab::SealSecret("open sesame", digits);
  });
}

/// The masked bytes that masked digits stand for.
std::string MaskedBytes(const std::string& masked_digits) {
  std::string bytes;
  for (std::size_t i = 0; i < masked_digits.size(); i += 2) {
    unsigned value = 0;
    for (const char masked : {masked_digits[i], masked_digits[i + 1]}) {
      const auto digit = static_cast<unsigned char>(masked ^ kMask);
      value = 16 * value + (digit <= '9' ? digit - '0' : digit - 'a' + 10U);
    }
    bytes += static_cast<char>(static_cast<char>(value) ^ kMask);
  }
  return bytes;
}

/// So far down the stack that whatever looks for leavings afterwards does not write over them.
[[gnu::noinline]] int OpenFarDown(const std::string& stored, std::array<char, 64>& buffer) {
  std::array<volatile char, 256UL * 1024> distance;
  distance.front() = 1;
  distance.back() = 1;
  const int result = KLIBCryptSzDecrypt(stored.c_str(), buffer.data(), buffer.size());
  return result * distance.front() * distance.back();
}

TEST(CipherMemory, HoldsNothingOfTheKeyAfterwards) {
  if (lab::kSanitizedBuild) GTEST_SKIP() << "the sanitizers' own memory is too large to look through";
  lab::PrivateRoot device;
  const std::string answer = GiveKey(device);
  ASSERT_GT(answer.size(), 64U) << answer;
  const std::string digits = answer.substr(0, 64);
  const std::string bytes = MaskedBytes(digits);
  OwnMemory memory;
  const lab::InRoot inside(device);

  std::array<char, 64> buffer{};
  ASSERT_EQ(OpenFarDown(answer.substr(64), buffer), 1);
  EXPECT_STREQ(buffer.data(), "open sesame");
  for (const std::size_t half : {0U, 1U}) {
    EXPECT_FALSE(memory.Holds(digits.substr(32 * half, 32))) << "half " << half << " of the digits";
    EXPECT_FALSE(memory.Holds(bytes.substr(16 * half, 16))) << "half " << half << " of the bytes";
  }

  // The search does find what is there.
  const std::string unmasked = Masked(digits) + Masked(bytes);
  EXPECT_TRUE(memory.Holds(digits));
  EXPECT_TRUE(memory.Holds(bytes));
}

}  // namespace
