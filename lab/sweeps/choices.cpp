#include "lab/sweeps/choices.h"

#include <random>

namespace lab::sweeps {
namespace {

bool AreAtMost(std::size_t limit, const std::vector<unsigned>& radixes) {
  std::size_t choices = 1;
  for (const unsigned radix : radixes) {
    choices *= radix;
    if (choices > limit) return false;
  }
  return true;
}

/// The next choice in order; false behind the last one.
bool Advance(const std::vector<unsigned>& radixes, std::vector<unsigned>& digits) {
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (++digits[i] < radixes[i]) return true;
    digits[i] = 0;
  }
  return false;
}

}  // namespace

bool ForEachChoice(const std::vector<unsigned>& radixes, const ChoiceLimits& limits,
                   const std::function<bool(const std::vector<unsigned>& digits)>& visit) {
  std::vector<unsigned> digits(radixes.size(), 0);
  if (AreAtMost(limits.all_up_to, radixes)) {
    do {
      if (!visit(digits)) return false;
    } while (Advance(radixes, digits));
    return true;
  }
  std::mt19937_64 random(limits.seed);
  for (std::size_t drawn = 0; drawn < limits.sample; ++drawn) {
    for (std::size_t i = 0; i < digits.size(); ++i) digits[i] = static_cast<unsigned>(random() % radixes[i]);
    if (!visit(digits)) return false;
  }
  return true;
}

}  // namespace lab::sweeps
