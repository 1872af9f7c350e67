#include "tests/support/hang_guard.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>

namespace testing_support {
namespace {

constexpr unsigned kSeconds = 60;
constexpr int kHung = 98;

std::atomic<pid_t> guarded = 0;
std::string message;
int console = -1;  // a test may have put something else in the place of standard error

void End(int /*signal*/) {
  static_cast<void>(::write(console, message.data(), message.size()) == 0);
  ::_exit(kHung);
}

}  // namespace

HangGuard::HangGuard(const std::string& what) : is_first_(guarded.exchange(::getpid()) != ::getpid()) {
  if (!is_first_) return;
  const ::testing::TestInfo* const test = ::testing::UnitTest::GetInstance()->current_test_info();
  message = what + " hung";
  if (test != nullptr) message += std::string(" in ") + test->test_suite_name() + "." + test->name();
  message += ": ended after " + std::to_string(kSeconds) + " s\n";
  console = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
  struct sigaction action {};
  action.sa_handler = End;
  ::sigaction(SIGALRM, &action, &earlier_);
  ::alarm(kSeconds);
}

HangGuard::~HangGuard() {
  if (!is_first_) return;
  guarded = 0;
  ::alarm(0);
  ::sigaction(SIGALRM, &earlier_, nullptr);
  ::close(console);
}

}  // namespace testing_support
