#include "base/patience.h"

#include <algorithm>

namespace KELP::Wifi {
namespace {

std::chrono::microseconds left = std::chrono::seconds(2);

}  // namespace

Patience::Patience() noexcept : end_(std::chrono::steady_clock::now() + left) {}

Patience::~Patience() {
  left = Left();
}

std::chrono::microseconds Patience::Left() const noexcept {
  using std::chrono::microseconds;
  const auto rest = end_ - std::chrono::steady_clock::now();
  return std::max(std::chrono::duration_cast<microseconds>(rest), microseconds::zero());
}

}  // namespace KELP::Wifi
