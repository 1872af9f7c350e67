#pragma once

#include "bench/contestant.h"
#include "bench/figures.h"

namespace bench {

struct ComparisonOptions {
  int runs = 25;
  int most_stations = 100'000;  // 0 leaves the growth out
};

/// Measures all contestants on the device. Throws std::runtime_error when one of them fails, or when the
/// shell script's documents say anything else than the program's.
Comparison Compare(const Device& device, const ComparisonOptions& options);

}  // namespace bench
