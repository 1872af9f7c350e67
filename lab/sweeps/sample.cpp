#include "lab/sweeps/sample.h"

#include <random>
#include <set>
#include <string_view>
#include <utility>

namespace lab::sweeps {

std::vector<std::size_t> DrawSample(const std::vector<std::string>& kinds, std::size_t count,
                                    std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::vector<std::size_t> order(kinds.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  // Not std::shuffle: what it makes of a seed is not the same with every library.
  for (std::size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[random() % i]);

  std::set<std::size_t> drawn;
  std::set<std::string_view> seen;
  for (const std::size_t place : order) {
    if (seen.insert(kinds[place]).second) drawn.insert(place);
  }
  for (const std::size_t place : order) {
    if (drawn.size() >= count) break;
    drawn.insert(place);
  }
  return {drawn.begin(), drawn.end()};
}

}  // namespace lab::sweeps
