#pragma once

#include <chrono>

namespace KELP::Wifi {

/// What a run has left of its patience with those who take in its words (the log daemon, whoever reads the
/// console): two seconds in all, however many of them do not listen and however often. One thread only.
///
/// While one lives the run is waiting: what that takes is gone for the rest of the run. Never throws.
class Patience {
 public:
  Patience() noexcept;
  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;
  ~Patience();

  /// Zero when it has run out.
  std::chrono::microseconds Left() const noexcept;

 private:
  std::chrono::steady_clock::time_point end_;
};

}  // namespace KELP::Wifi
