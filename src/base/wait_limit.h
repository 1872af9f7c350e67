#pragma once

#include <chrono>
#include <csignal>
#include <ctime>

namespace KELP::Wifi {

/// Bounds the waits of a library that has no bound of its own: while this lives, a system call in which the
/// calling thread waits is interrupted (EINTR) once `limit` is over, and ten times a second from then on, so
/// that no later one waits either. Takes SIGRTMIN for that; what the process does with that signal is as
/// before afterwards.
class WaitLimit {
 public:
  explicit WaitLimit(std::chrono::milliseconds limit);
  WaitLimit(const WaitLimit&) = delete;
  WaitLimit& operator=(const WaitLimit&) = delete;
  ~WaitLimit() { TakeBack(); }

  /// False when the system has no timer to give: nothing is interrupted then.
  bool IsSet() const { return is_set_; }
  bool IsOver() const { return std::chrono::steady_clock::now() >= end_; }

 private:
  void TakeBack() noexcept;

  std::chrono::steady_clock::time_point end_;
  timer_t timer_{};
  bool is_set_ = false;
  bool was_blocked_ = false;
  struct sigaction earlier_ {};
};

}  // namespace KELP::Wifi
