#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "bench/contestant.h"

namespace bench {

/// What a run costs on a device with so many filtered stations.
struct GrowthStep {
  int stations = 0;
  std::int64_t instructions = 0;
  std::int64_t peak_kilobytes = 0;
  /// The instructions beyond those of a run without stations, divided by the same of the step before; none
  /// for the first two steps.
  std::optional<double> ratio;
};

/// Runs the program on the device with no stations, then with 100 and ten times as many up to `most`. Nothing
/// where instructions cannot be counted.
std::vector<GrowthStep> MeasureGrowth(const std::filesystem::path& image, const Contestant& program,
                                      int most);

}  // namespace bench
