#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "base/unique_fd.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

TEST(UniqueFdFailures, WriteThatTakesNothingEndsAsOneWithoutSpace) {
  const UniqueFd file(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  testing_support::FailingCalls calls;
  calls.WriteAtMost(0);
  errno = 0;
  EXPECT_FALSE(WriteAll(file.Get(), "text", 4));
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_TRUE(WriteAll(file.Get(), "", 0));
}

}  // namespace
}  // namespace KELP::Wifi
