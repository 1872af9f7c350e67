#include <gtest/gtest.h>

#include <cerrno>
#include <optional>

#include "base/format_text.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

TEST(TryFormatTextFailures, FailedMeasuringGivesNoText) {
  testing_support::FailingCalls calls;
  calls.Fail("vsnprintf", EOVERFLOW);
  EXPECT_EQ(TryFormatText("%s", "x"), std::nullopt);
  EXPECT_EQ(TryFormatText("%s", "x"), "x");
}

}  // namespace
}  // namespace KELP::Wifi
