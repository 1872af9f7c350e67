#include <gtest/gtest.h>

#include <cstring>

#include "legacy/encoded_text.h"
#include "tests/support/failing_platform.h"

namespace KELP::Wifi::Updater {
namespace {

TEST(DecryptSsidFailures, SecretIsWipedFromTheBufferThatHeldIt) {
  testing_support::FailingPlatform platform;
  platform.decrypted = "correct horse battery staple";
  EXPECT_EQ(DecryptSsid("stored"), platform.decrypted);
  EXPECT_GE(platform.wiped, std::strlen(platform.decrypted));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
