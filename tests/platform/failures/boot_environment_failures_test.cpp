#include <gtest/gtest.h>

#include "lab/images/boot_environment.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/boot_environment.h"
#include "tests/support/failing_calls.h"

namespace {

TEST(BootEnvironmentFailures, LibraryThatCannotBeInitialisedIsNegative) {
  lab::PrivateRoot device;
  lab::InstallBootEnvironment(device, {{"usb3_disable", "1"}});
  const lab::InRoot inside(device);
  ASSERT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1);
  testing_support::FailingCalls calls;
  calls.Fail("libuboot_initialize", ENOMEM);
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), -1);
  EXPECT_EQ(KELPUSBGetUSB3DisableUbootEnv(), 1);
}

}  // namespace
