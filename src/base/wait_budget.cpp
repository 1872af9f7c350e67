#include "base/wait_budget.h"

#include <algorithm>

namespace KELP::Wifi {

using std::chrono::steady_clock;

void OutputWaitBudget::Spend(Time time) noexcept {
  remaining_ -= std::min(time, remaining_);
}

OutputWaitBudget& LogWaitBudget() noexcept {
  static constinit OutputWaitBudget budget{std::chrono::seconds(10)};
  return budget;
}

OutputWaitBudget& ReportWaitBudget() noexcept {
  static constinit OutputWaitBudget budget{std::chrono::seconds(5)};
  return budget;
}

OutputWait::~OutputWait() {
  if (start_ == steady_clock::time_point{}) return;
  budget_.Spend(std::chrono::ceil<Time>(steady_clock::now() - start_));
}

OutputWait::Time OutputWait::Remaining() noexcept {
  if (start_ == steady_clock::time_point{}) start_ = steady_clock::now();
  const auto passed = std::chrono::ceil<Time>(steady_clock::now() - start_);
  return std::max(std::min(limit_, budget_.Remaining()) - passed, Time::zero());
}

}  // namespace KELP::Wifi
