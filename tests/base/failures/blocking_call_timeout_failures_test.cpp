#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "base/blocking_call_timeout.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using testing_support::FailingCalls;

bool IsSignalHandled() {
  struct sigaction action {};
  ::sigaction(SIGRTMIN, nullptr, &action);
  return action.sa_handler != SIG_DFL;
}

TEST(BlockingCallTimeoutFailures, WithoutATimerItIsNotSetAndTheSignalStaysAsItWas) {
  for (const char* const call : {"timer_create", "timer_settime"}) {
    FailingCalls calls;
    calls.Fail(call, EAGAIN);
    const BlockingCallTimeout timeout(1h);
    EXPECT_FALSE(timeout.IsSet()) << call;
    EXPECT_FALSE(IsSignalHandled()) << call;
  }
}

TEST(BlockingCallTimeoutFailures, LeavesNoTimerBehind) {
  FailingCalls calls;
  { const BlockingCallTimeout timeout(1h); }
  calls.Fail("timer_settime", EINVAL);
  { const BlockingCallTimeout timeout(1h); }
  EXPECT_THAT(calls.Made({"timer_create", "timer_delete"}),
              ElementsAre("timer_create", "timer_delete", "timer_create", "timer_delete"));
}

TEST(BlockingCallTimeoutFailures, SignalOfATimerThatStaysIsHandledForEver) {
  {
    FailingCalls calls;
    calls.Fail("timer_delete", EINVAL);
    const BlockingCallTimeout timeout(1h);
  }
  EXPECT_TRUE(IsSignalHandled());
  ::signal(SIGRTMIN, SIG_DFL);
}

}  // namespace
}  // namespace KELP::Wifi
