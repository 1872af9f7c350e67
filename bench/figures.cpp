#include "bench/figures.h"

#include <algorithm>
#include <string_view>

namespace bench {
namespace {

constexpr double kKibi = 1024;

std::optional<double> Divided(std::optional<std::int64_t> value, double divisor) {
  if (!value || divisor == 0) return std::nullopt;
  return static_cast<double>(*value) / divisor;
}

std::optional<double> CpuRatio(const std::optional<Times>& program, const std::optional<Times>& peer) {
  if (!program || !peer) return std::nullopt;
  return peer->cpu_milliseconds / program->cpu_milliseconds;
}

std::optional<double> SystemCalls(const Figures& figures) {
  if (!figures.calls) return std::nullopt;
  return Total(*figures.calls);
}

std::optional<double> MostOpens(const Comparison& comparison) {
  if (comparison.opens.empty()) return std::nullopt;
  int most = 0;
  for (const auto& [path, count] : comparison.opens) {
    if (IsLegacyFile(path)) most = std::max(most, count);
  }
  return most;
}

}  // namespace

bool IsLegacyFile(const std::string& path) {
  constexpr std::string_view kSettings = "/usr/kelp/etc/";
  constexpr std::string_view kFilters = "/etc/hostapd/";
  return (path.starts_with(kSettings) && !path.ends_with("/secret.key")) || path.starts_with(kFilters);
}

std::vector<Target> Targets(const Comparison& comparison) {
  const Figures& program = comparison.program;
  std::vector<Target> targets{
      {"times less CPU time than the shell script, in memory",
       CpuRatio(program.in_memory, comparison.peer.in_memory), 15, true, 1},
      {"times less CPU time than the shell script, on disk",
       CpuRatio(program.on_disk, comparison.peer.on_disk), 8, true, 1},
      {"times the instructions of the empty program",
       Divided(program.instructions, static_cast<double>(comparison.empty.instructions.value_or(0))), 2.2,
       false, 2},
      {"system calls", SystemCalls(program), 430, false, 0},
      {"opens of a legacy file at most", MostOpens(comparison), 1, false, 0},
      {"MiB of memory at its peak", Divided(program.peak_kilobytes, kKibi), 6, false, 2},
      {"KiB of stripped program", Divided(program.stripped_bytes, kKibi), 250, false, 1},
  };
  for (const GrowthStep& step : comparison.growth) {
    if (!step.ratio) continue;
    targets.push_back({"times the work for 10 times the stations, up to " + std::to_string(step.stations),
                       step.ratio, 10.5, false, 2});
  }
  return targets;
}

}  // namespace bench
