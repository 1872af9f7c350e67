// The filter lists: all sections of a file, one after the other.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/micro/samples.h"
#include "bench/micro/scratch_file.h"
#include "platform/section_files.h"

namespace {

constexpr std::size_t kCapacity = 8192;

void LoadEachSection(benchmark::State& state) {
  const bench::ScratchFile file(bench::FilterList(static_cast<std::size_t>(state.range(0))));
  const char* const path = file.Path().c_str();
  KLIBCSzList* list = KLIBCSzListAlloc(kCapacity);
  KLIBCSzHash* table = KLIBCSzHashAlloc(kCapacity);
  for (auto iteration : state) {
    const int count = KLIBCFileEnumSection(path, &list);
    for (int section = 0; section < count; ++section) {
      KLIBCFileGetSection(path, KLIBCSzListGet(list, section), &table);
      benchmark::DoNotOptimize(KLIBCSzHashGetValue(table, "mac"));
    }
  }
  state.SetComplexityN(state.range(0));
  KLIBCSzListFree(list);
  KLIBCSzHashFree(table);
}
BENCHMARK(LoadEachSection)->RangeMultiplier(10)->Range(32, 32'000)->Complexity(benchmark::oN);

}  // namespace
