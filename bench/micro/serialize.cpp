// Records to JSON values.
#include <benchmark/benchmark.h>

#include "bench/micro/samples.h"
#include "platform/json_serializer.h"

namespace {

using KELP::Wifi::Util::JsonSerializer::Serialize;

void SerializeNetwork(benchmark::State& state) {
  const KELP::Wifi::NetworkSetting network = bench::Network();
  for (auto iteration : state) benchmark::DoNotOptimize(Serialize(network));
}
BENCHMARK(SerializeNetwork);

void SerializeFilters(benchmark::State& state) {
  const KELP::Wifi::Daemon::MiscSetting misc = bench::Filters(static_cast<std::size_t>(state.range(0)));
  for (auto iteration : state) benchmark::DoNotOptimize(Serialize(misc));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(SerializeFilters)->RangeMultiplier(10)->Range(32, 32'000)->Complexity(benchmark::oN);

}  // namespace
