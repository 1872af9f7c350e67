// A legacy value by its key: the most frequent read of a run.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/micro/samples.h"
#include "bench/micro/scratch_file.h"
#include "platform/sdk_utils.h"

namespace {

std::string LastKey(std::size_t keys) {
  return "key_" + std::to_string(keys - 1);
}

void ReadFromRememberedFile(benchmark::State& state) {
  const auto keys = static_cast<std::size_t>(state.range(0));
  const bench::ScratchFile file(bench::KeyValueFile(keys));
  const std::string key = LastKey(keys);
  for (auto iteration : state) {
    benchmark::DoNotOptimize(KELP::Wifi::Util::SDKUtils::FileGetKeyValue(file.Path(), key));
  }
}
BENCHMARK(ReadFromRememberedFile)->Arg(10)->Arg(80);

}  // namespace
