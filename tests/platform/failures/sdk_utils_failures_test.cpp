#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/sdk_utils.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi::Util {
namespace {

constexpr const char* kFile = "/etc/file";

TEST(SDKUtilsFailures, FailedReadIsNotRemembered) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=value\n");
  const lab::InRoot inside(device);
  {
    testing_support::FailingCalls calls;
    calls.Fail("read", EIO);
    EXPECT_THROW(SDKUtils::FileGetKeyValue(kFile, "key"), std::system_error);
  }
  EXPECT_EQ(SDKUtils::FileGetKeyValue(kFile, "key"), "value");
}

}  // namespace
}  // namespace KELP::Wifi::Util
