#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "bench/growth.h"
#include "bench/system_calls.h"

namespace bench {

/// Medians over all runs with the devices on one kind of storage.
struct Times {
  double cpu_milliseconds = 0;
  double wall_milliseconds = 0;
};

/// One contestant's figures. What is missing could not be had here, or makes no sense for it.
struct Figures {
  std::string name;
  std::optional<Times> in_memory;
  std::optional<Times> on_disk;
  std::int64_t peak_kilobytes = 0;
  std::optional<std::int64_t> instructions;
  std::optional<CallCounts> calls;
  std::optional<std::int64_t> stripped_bytes;
  std::optional<std::int64_t> bytes_with_libraries;
};

/// What the program costs on another household's device.
struct OtherDevice {
  std::string name;
  std::optional<std::int64_t> instructions;
  std::optional<CallCounts> calls;
};

struct Comparison {
  std::string device;
  int runs = 0;
  Figures program;
  Figures peer;
  Figures floor;
  Figures empty;
  CallCounts calls_from_main;        // the program's
  std::map<std::string, int> opens;  // the program's, of each input file
  std::vector<GrowthStep> growth;
  std::vector<OtherDevice> others{};
};

/// What the program is held against: what the README and docs/benchmarks.md promise.
struct Target {
  std::string text;
  std::optional<double> value;  // none: could not be had here
  double bound = 0;
  bool is_least = false;  // the bound is the least allowed value, not the greatest
  int decimals = 0;

  bool IsMet() const { return value && (is_least ? *value >= bound : *value <= bound); }
};

std::vector<Target> Targets(const Comparison& comparison);

/// Whether a household's old settings stand in the file: it is to be opened once in a run. The kernel's
/// entries, the boot environment and the cipher's key are asked anew each time.
bool IsLegacyFile(const std::string& path);

}  // namespace bench
