#pragma once

#include <chrono>

namespace KELP::Wifi {

/// What a run has left of its patience with those who take in its words (the log daemon, whoever reads the
/// console): two seconds in all, however many of them do not listen and however often. One thread only.
///
/// While one lives the run is waiting: what that takes is gone for the rest of the run. Never throws.
class OutputWaitBudget {
 public:
  OutputWaitBudget() noexcept;
  OutputWaitBudget(const OutputWaitBudget&) = delete;
  OutputWaitBudget& operator=(const OutputWaitBudget&) = delete;
  ~OutputWaitBudget();

  /// Zero when it has run out.
  std::chrono::microseconds Remaining() const noexcept;

 private:
  std::chrono::steady_clock::time_point end_;
};

}  // namespace KELP::Wifi
