#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <string>

#include "lab/images/private_root.h"
#include "lab/images/secret_seal.h"
#include "lab/runs/in_root.h"
#include "platform/cipher.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_calls.h"

namespace {

using testing_support::FailingAllocation;
using testing_support::FailingCalls;

constexpr const char* kKey = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";

class CipherFailures : public ::testing::Test {
 protected:
  CipherFailures() : stored_(lab::SealSecret("secret", kKey)) {
    device_.Write("/usr/kelp/etc/secret.key", kKey);
  }

  int Open() {
    buffer_.fill('\x5A');
    return KLIBCryptSzDecrypt(stored_.c_str(), buffer_.data(), buffer_.size());
  }
  std::string Buffer() const { return {buffer_.data(), buffer_.size()}; }

  lab::PrivateRoot device_;
  std::string stored_;
  std::array<char, 64> buffer_{};
};

TEST_F(CipherFailures, LibraryThatCannotBeInitialisedGivesNothing) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("sodium_init", 0);
  EXPECT_EQ(Open(), 0);
  EXPECT_EQ(Open(), 1);
}

TEST_F(CipherFailures, KeyThatCannotBeReadGivesNothing) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("read", EIO);
  EXPECT_EQ(Open(), 0);
  EXPECT_EQ(Buffer().find("secret"), std::string::npos);
  calls.Fail("fstat", EIO);
  EXPECT_EQ(Open(), 0);
}

TEST_F(CipherFailures, ReadOfTheKeyThatASignalInterruptsIsRepeated) {
  const lab::InRoot inside(device_);
  FailingCalls calls;
  calls.Fail("read", EINTR, 1, 3);
  EXPECT_EQ(Open(), 1);
}

TEST_F(CipherFailures, MemoryThatRunsOutGivesNothingAndThrowsNothing) {
  const lab::InRoot inside(device_);
  for (int succeeding = 0; succeeding < 8; ++succeeding) {
    int result = -1;
    int failed = 0;
    {
      const FailingAllocation failing(succeeding);
      EXPECT_NO_THROW(result = Open());
      failed = FailingAllocation::Failed();
    }
    EXPECT_EQ(result, failed > 0 ? 0 : 1) << succeeding;
  }
}

}  // namespace
