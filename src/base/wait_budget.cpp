#include "base/wait_budget.h"

#include <algorithm>

namespace KELP::Wifi {
namespace {

std::chrono::microseconds left = std::chrono::seconds(2);

}  // namespace

OutputWaitBudget::OutputWaitBudget() noexcept : end_(std::chrono::steady_clock::now() + left) {}

OutputWaitBudget::~OutputWaitBudget() {
  left = Remaining();
}

std::chrono::microseconds OutputWaitBudget::Remaining() const noexcept {
  using std::chrono::microseconds;
  const auto rest = end_ - std::chrono::steady_clock::now();
  return std::max(std::chrono::duration_cast<microseconds>(rest), microseconds::zero());
}

}  // namespace KELP::Wifi
