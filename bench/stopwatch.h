#pragma once

#include <cstdint>
#include <filesystem>

#include "bench/contestant.h"

namespace bench {

/// What one run cost, the processes that it started included.
struct Cost {
  std::int64_t wall_nanoseconds = 0;
  std::int64_t cpu_microseconds = 0;  // its own and the kernel's for it
  std::int64_t peak_kilobytes = 0;    // of the largest process
};

/// Runs the contestant on a new device. Laying the device out and starting the run do not count.
Cost Measure(const std::filesystem::path& image, const Contestant& contestant);
/// Runs the contestant on this device.
Cost Measure(lab::PrivateRoot& root, const Contestant& contestant);

}  // namespace bench
