#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace lab::sweeps {

/// How many of a set of choices are visited.
struct ChoiceLimits {
  std::size_t all_up_to = 4096;
  std::size_t sample = 1000;  // of more than that
  std::uint64_t seed = 1;
};

/// Visits choices of one digit for each radix: all of them where there are few, otherwise a sample drawn with
/// the seed. `visit` gives false to stop. Gives false when it was stopped.
bool ForEachChoice(const std::vector<unsigned>& radixes, const ChoiceLimits& limits,
                   const std::function<bool(const std::vector<unsigned>& digits)>& visit);

}  // namespace lab::sweeps
