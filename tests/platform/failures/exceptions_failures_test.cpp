#include <gtest/gtest.h>

#include <cerrno>

#include "platform/exceptions.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

TEST(RuntimeErrorFailures, ThatCannotBeFormattedTellsOfThat) {
  testing_support::FailingCalls calls;
  calls.Fail("vsnprintf", EOVERFLOW);
  EXPECT_STREQ(RuntimeError("%s", "x").what(), "Error during formatting.: runtime error");
}

TEST(RuntimeErrorFailures, MessageWithoutArgumentsNeedsNoFormatting) {
  testing_support::FailingCalls calls;
  calls.Fail("vsnprintf", EOVERFLOW);
  EXPECT_STREQ(RuntimeError("%s").what(), "%s: runtime error");
  EXPECT_TRUE(calls.Made({"vsnprintf"}).empty());
}

}  // namespace
}  // namespace KELP::Wifi
