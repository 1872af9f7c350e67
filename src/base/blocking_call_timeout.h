#pragma once

#include <chrono>
#include <csignal>
#include <ctime>

namespace KELP::Wifi {

/// Interrupts a blocking system call of the calling thread (EINTR) once `time` has passed, and ten times a
/// second from then on, so that no later call blocks either. For code that has no timeout of its own.
/// Takes SIGRTMIN; afterwards the process handles that signal as before.
class BlockingCallTimeout {
 public:
  explicit BlockingCallTimeout(std::chrono::milliseconds time);
  BlockingCallTimeout(const BlockingCallTimeout&) = delete;
  BlockingCallTimeout& operator=(const BlockingCallTimeout&) = delete;
  ~BlockingCallTimeout() { Disarm(); }

  /// False when the system has no timer to give: nothing is interrupted then.
  bool IsSet() const { return is_set_; }
  bool HasExpired() const { return std::chrono::steady_clock::now() >= end_; }

 private:
  void Disarm() noexcept;

  std::chrono::steady_clock::time_point end_;
  timer_t timer_{};
  bool is_set_ = false;
  bool was_blocked_ = false;
  struct sigaction earlier_ {};
};

}  // namespace KELP::Wifi
