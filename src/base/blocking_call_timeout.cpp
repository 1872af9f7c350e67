#include "base/blocking_call_timeout.h"

#include <unistd.h>

#include <cerrno>

#ifndef sigev_notify_thread_id  // glibc has the member, but not its name
#define sigev_notify_thread_id _sigev_un._tid
#endif

namespace KELP::Wifi {
namespace {

using std::chrono::milliseconds;

// More than once: the first one may come just before a call begins to wait.
constexpr milliseconds kInterval{100};

timespec ToTimespec(milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  const std::chrono::nanoseconds rest = time - seconds;
  timespec result{};
  result.tv_sec = static_cast<time_t>(seconds.count());
  result.tv_nsec = static_cast<long>(rest.count());
  return result;
}

/// That a signal is handled is what interrupts the call.
void DoNothing(int /*signal*/) {}

sigset_t JustTheSignal() {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, SIGRTMIN);
  return set;
}

}  // namespace

BlockingCallTimeout::BlockingCallTimeout(milliseconds time) : end_(std::chrono::steady_clock::now() + time) {
  sigevent event{};
  event.sigev_notify = SIGEV_THREAD_ID;
  event.sigev_signo = SIGRTMIN;
  event.sigev_notify_thread_id = ::gettid();
  if (::timer_create(CLOCK_MONOTONIC, &event, &timer_) != 0) return;

  struct sigaction action {};
  action.sa_handler = DoNothing;  // and no SA_RESTART, with which calls would go on waiting
  const sigset_t signal = JustTheSignal();
  sigset_t blocked;
  const itimerspec times{.it_interval = ToTimespec(kInterval), .it_value = ToTimespec(time)};
  if (::sigaction(SIGRTMIN, &action, &earlier_) != 0) {
    ::timer_delete(timer_);
    return;
  }
  is_set_ = true;
  const bool is_unblocked = ::pthread_sigmask(SIG_UNBLOCK, &signal, &blocked) == 0;
  was_blocked_ = is_unblocked && ::sigismember(&blocked, SIGRTMIN) == 1;
  if (!is_unblocked || ::timer_settime(timer_, 0, &times, nullptr) != 0) Disarm();
}

void BlockingCallTimeout::Disarm() noexcept {
  if (!is_set_) return;
  is_set_ = false;
  const int error = errno;
  // The timer first: its signal is the end of a process that does not handle it.
  if (::timer_delete(timer_) == 0) {
    const sigset_t signal = JustTheSignal();
    if (was_blocked_) ::pthread_sigmask(SIG_BLOCK, &signal, nullptr);
    ::sigaction(SIGRTMIN, &earlier_, nullptr);
  }
  errno = error;
}

}  // namespace KELP::Wifi
