#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "base/log.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

TEST(LogFailures, LongLineArrivesCutWhereThereIsNoMemory) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  const std::string word(5000, 'w');
  {
    const testing_support::FailingAllocation failing;
    Log(LOG_ERR, "%s:%d Invalid pmf mode: %s, select disabled.", 776, word.c_str());
  }
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].message.starts_with("kelpwifiupdater:776 Invalid pmf mode: www")) << lines[0].message;
  EXPECT_GE(lines[0].message.size(), 1000U);
}

TEST(LogFailures, FailedFormattingNeitherThrowsNorStops) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  {
    testing_support::FailingCalls calls;
    calls.Fail("vsnprintf", EOVERFLOW);
    Log(LOG_ERR, "%s:%d lost", 1);
  }
  Log(LOG_ERR, "%s:%d found", 2);
  const auto lines = inside.Log();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back().message, "kelpwifiupdater:2 found");
}

}  // namespace
}  // namespace KELP::Wifi
