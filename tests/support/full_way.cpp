#include "tests/support/full_way.h"

#include <gtest/gtest.h>

#include "lab/plain/plain_way.h"

namespace testing_support {

void SkipTest(const std::string& reason) {
  [&] { GTEST_SKIP() << reason; }();
  // GoogleTest takes this for an end that was reported.
  throw testing::AssertionException(
      testing::TestPartResult(testing::TestPartResult::kSkip, __FILE__, __LINE__, reason.c_str()));
}

void RequireFullWay() {
  if (lab::IsPlainWay()) SkipTest("takes mounts, which this container does not let a process make");
}

ShellResult WithoutNotice(ShellResult result) {
  const std::string notice = "devicelab: " + lab::PlainWayNotice();
  if (const std::size_t place = result.output.find(notice); place != std::string::npos) {
    result.output.erase(place, notice.size());
  }
  return result;
}

}  // namespace testing_support
