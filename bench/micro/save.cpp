// A document onto the storage: all or nothing, flushed. In memory, so that the disk does not count.
#include <benchmark/benchmark.h>

#include "base/atomic_file.h"
#include "bench/micro/samples.h"
#include "bench/micro/scratch_file.h"
#include "platform/json_serializer.h"
#include "platform/json_util.h"

namespace {

void ReplaceBytes(benchmark::State& state) {
  const bench::ScratchFile file("");
  const std::string bytes(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto iteration : state) KELP::Wifi::WriteFileAtomically(file.Path(), bytes);
}
BENCHMARK(ReplaceBytes)->Arg(0)->Arg(4096)->Arg(65536);

void SaveNetwork(benchmark::State& state) {
  const bench::ScratchFile file("");
  const Json::Value value = KELP::Wifi::Util::JsonSerializer::Serialize(bench::Network());
  for (auto iteration : state) KELP::Wifi::Util::JsonUtil::SaveJsonToFile(file.Path(), value);
}
BENCHMARK(SaveNetwork);

void SaveFilters(benchmark::State& state) {
  const bench::ScratchFile file("");
  const auto stations = static_cast<std::size_t>(state.range(0));
  const Json::Value value = KELP::Wifi::Util::JsonSerializer::Serialize(bench::Filters(stations));
  for (auto iteration : state) KELP::Wifi::Util::JsonUtil::SaveJsonToFile(file.Path(), value);
  state.SetComplexityN(state.range(0));
}
BENCHMARK(SaveFilters)->RangeMultiplier(10)->Range(32, 32'000)->Complexity(benchmark::oN);

}  // namespace
