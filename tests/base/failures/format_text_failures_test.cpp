#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "base/format_text.h"
#include "platform/exceptions.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

TEST(FormatTextFailures, FailedMeasuringThrows) {
  testing_support::FailingCalls calls;
  calls.Fail("vsnprintf", EOVERFLOW);
  std::string text;
  try {
    FormatText("%s", "x");
  } catch (const RuntimeError& error) {
    text = error.what();
  }
  EXPECT_EQ(text, "Error during formatting.: runtime error");
}

TEST(FormatTextFailures, RuntimeErrorThatCannotBeFormattedIsTheFormattingFailure) {
  testing_support::FailingCalls calls;
  calls.Fail("vsnprintf", EOVERFLOW);
  EXPECT_THROW(RuntimeError("%s", "x"), RuntimeError);
}

TEST(FormatTextFailures, MessageWithoutArgumentsNeedsNoFormatting) {
  testing_support::FailingCalls calls;
  calls.Fail("vsnprintf", EOVERFLOW);
  EXPECT_STREQ(RuntimeError("%s").what(), "%s: runtime error");
  EXPECT_TRUE(calls.Made({"vsnprintf"}).empty());
}

}  // namespace
}  // namespace KELP::Wifi
