#pragma once

#include <chrono>

namespace KELP::Wifi {

/// The time that a run may still spend waiting for readers of its output: the log daemon, whoever reads the
/// console. One thread only.
class OutputWaitBudget {
 public:
  using Time = std::chrono::microseconds;

  constexpr explicit OutputWaitBudget(Time time) noexcept : remaining_(time) {}
  OutputWaitBudget(const OutputWaitBudget&) = delete;
  OutputWaitBudget& operator=(const OutputWaitBudget&) = delete;
  ~OutputWaitBudget() = default;

  Time Remaining() const noexcept { return remaining_; }
  void Spend(Time time) noexcept;
  /// For a reader that does not read: nothing waits for it any more.
  void SpendAll() noexcept { remaining_ = Time::zero(); }

 private:
  Time remaining_;
};

/// For all lines but the one that reports a failure, together: ten seconds.
OutputWaitBudget& LogWaitBudget() noexcept;
/// For the line that reports a failure, and the console: five seconds, which no other line can use up.
OutputWaitBudget& ReportWaitBudget() noexcept;

/// One wait, at the cost of a budget. It begins when Remaining() is called first, so that output that finds
/// room does not even ask for the time, and ends with the object.
class OutputWait {
 public:
  using Time = OutputWaitBudget::Time;

  /// Takes at most `limit`.
  explicit OutputWait(OutputWaitBudget& budget, Time limit = Time::max()) noexcept
      : budget_(budget), limit_(limit) {}
  OutputWait(const OutputWait&) = delete;
  OutputWait& operator=(const OutputWait&) = delete;
  ~OutputWait();

  /// Zero when the wait is over.
  Time Remaining() noexcept;

 private:
  OutputWaitBudget& budget_;
  Time limit_;
  std::chrono::steady_clock::time_point start_{};
};

}  // namespace KELP::Wifi
