#include "base/blocking_call_timeout.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>

#include "tests/support/hang_guard.h"

namespace KELP::Wifi {
namespace {

using namespace std::chrono_literals;

/// A pipe into which nobody writes unless told to.
class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe(ends_.data()), 0); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    for (const int end : ends_) ::close(end);
  }

  /// 0, or the error of the read.
  int WaitForAByte() const {
    char byte = 0;
    return ::read(ends_[0], &byte, 1) == 1 ? 0 : errno;
  }
  void PutAByte() const { EXPECT_EQ(::write(ends_[1], "x", 1), 1); }

 private:
  std::array<int, 2> ends_{};
};

class BlockingCallTimeoutTest : public ::testing::Test {
  testing_support::HangGuard guard_{"a call that the timeout has to interrupt"};
};

TEST_F(BlockingCallTimeoutTest, InterruptsTheWaitDuringWhichItIsReachedAndEveryLaterOne) {
  const Pipe pipe;
  const BlockingCallTimeout timeout(50ms);
  ASSERT_TRUE(timeout.IsSet());
  EXPECT_FALSE(timeout.HasExpired());
  EXPECT_EQ(pipe.WaitForAByte(), EINTR);
  EXPECT_TRUE(timeout.HasExpired());
  EXPECT_EQ(pipe.WaitForAByte(), EINTR);
  EXPECT_EQ(pipe.WaitForAByte(), EINTR);
}

TEST_F(BlockingCallTimeoutTest, TakesWholeSecondsToo) {
  const Pipe pipe;
  const BlockingCallTimeout timeout(1s);
  EXPECT_EQ(pipe.WaitForAByte(), EINTR);
  EXPECT_TRUE(timeout.HasExpired());
}

TEST_F(BlockingCallTimeoutTest, LetsAWaitEndThatIsShorter) {
  const Pipe pipe;
  const BlockingCallTimeout timeout(1h);
  std::thread giver([&] {
    std::this_thread::sleep_for(50ms);
    pipe.PutAByte();
  });
  EXPECT_EQ(pipe.WaitForAByte(), 0);
  giver.join();
  EXPECT_FALSE(timeout.HasExpired());
}

TEST_F(BlockingCallTimeoutTest, InterruptsNoOtherThread) {
  const Pipe pipe;
  int error_of_other = -1;
  std::thread other([&] { error_of_other = pipe.WaitForAByte(); });
  {
    const Pipe own;
    const BlockingCallTimeout timeout(50ms);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(own.WaitForAByte(), EINTR);
  }
  pipe.PutAByte();
  other.join();
  EXPECT_EQ(error_of_other, 0);
}

TEST_F(BlockingCallTimeoutTest, InterruptsNothingAfterwards) {
  const Pipe pipe;
  { const BlockingCallTimeout timeout(1ms); }
  std::thread giver([&] {
    std::this_thread::sleep_for(250ms);
    pipe.PutAByte();
  });
  EXPECT_EQ(pipe.WaitForAByte(), 0);
  giver.join();
}

void HandlerOfSomebodyElse(int /*signal*/) {}

bool IsBlocked() {
  sigset_t blocked;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return ::sigismember(&blocked, SIGRTMIN) == 1;
}

TEST_F(BlockingCallTimeoutTest, LeavesTheSignalAsItWas) {
  const Pipe pipe;
  sigset_t signal;
  ::sigemptyset(&signal);
  ::sigaddset(&signal, SIGRTMIN);
  struct sigaction theirs {};
  theirs.sa_handler = HandlerOfSomebodyElse;
  theirs.sa_flags = SA_RESTART;
  struct sigaction before {};
  ASSERT_EQ(::sigaction(SIGRTMIN, &theirs, &before), 0);

  for (const bool is_blocked : {true, false}) {
    ::pthread_sigmask(is_blocked ? SIG_BLOCK : SIG_UNBLOCK, &signal, nullptr);
    {
      const BlockingCallTimeout timeout(20ms);
      EXPECT_EQ(pipe.WaitForAByte(), EINTR);
    }
    EXPECT_EQ(IsBlocked(), is_blocked);
    struct sigaction after {};
    ::sigaction(SIGRTMIN, nullptr, &after);
    EXPECT_EQ(after.sa_handler, HandlerOfSomebodyElse);
    EXPECT_NE(after.sa_flags & SA_RESTART, 0);
  }
  ::sigaction(SIGRTMIN, &before, nullptr);
}

TEST_F(BlockingCallTimeoutTest, LeavesErrnoAlone) {
  {
    const BlockingCallTimeout timeout(1h);
    errno = ENOTTY;
  }
  EXPECT_EQ(errno, ENOTTY);
}

}  // namespace
}  // namespace KELP::Wifi
