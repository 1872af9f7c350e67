#include "base/run.h"

namespace KELP::Wifi {
namespace {

bool under_way = false;
std::uint64_t stretch = 0;

}  // namespace

RunUnderWay::RunUnderWay() noexcept {
  under_way = true;
  ++stretch;
}

RunUnderWay::~RunUnderWay() {
  under_way = false;
}

void TrustNoFileReadSoFar() noexcept {
  ++stretch;
}

std::uint64_t CurrentStretch() noexcept {
  return under_way ? stretch : 0;
}

}  // namespace KELP::Wifi
