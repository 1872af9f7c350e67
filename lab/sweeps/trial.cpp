#include "lab/sweeps/trial.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <stdexcept>
#include <utility>

#include "lab/runs/pool.h"
#include "lab/sweeps/sample.h"

namespace lab::sweeps {
namespace {

// How a result travels from a worker.
constexpr char kWell = '+';
constexpr char kWrong = '-';

struct Count {
  std::size_t made = 0;
  std::size_t well = 0;
  std::map<std::string, std::size_t> remarks;
};

void PrintCount(const std::string& kind, const Count& count) {
  std::printf("  %-28s %5zu tried %5zu ended well", kind.c_str(), count.made, count.well);
  for (const auto& [remark, times] : count.remarks) std::printf(", %zu %s", times, remark.c_str());
  std::printf("\n");
}

}  // namespace

TrialResult Well() {
  return {true};
}

TrialResult Wrong(std::string what) {
  return {false, std::move(what)};
}

std::vector<TrialResult> Make(const std::vector<Trial>& trials, unsigned workers) {
  const std::vector<std::string> texts = ParallelMap(trials.size(), workers, [&](std::size_t place) {
    const TrialResult result = trials[place].run();
    return std::string(1, result.is_well ? kWell : kWrong) + result.text;
  });
  std::vector<TrialResult> results;
  std::transform(texts.begin(), texts.end(), std::back_inserter(results), [](const std::string& text) {
    return TrialResult{text.front() == kWell, text.substr(1)};
  });
  return results;
}

std::vector<Trial> Sample(const std::vector<Trial>& trials, std::size_t count, std::uint64_t seed) {
  std::vector<std::string> kinds;
  for (const Trial& trial : trials) kinds.push_back(trial.kind);
  std::vector<Trial> sample;
  for (const std::size_t place : DrawSample(kinds, count, seed)) sample.push_back(trials[place]);
  return sample;
}

std::vector<Trial> Named(const std::vector<Trial>& trials, const std::vector<std::string>& names) {
  std::vector<Trial> named;
  std::copy_if(trials.begin(), trials.end(), std::back_inserter(named), [&](const Trial& trial) {
    return std::find(names.begin(), names.end(), trial.name) != names.end();
  });
  if (named.size() != names.size()) throw std::runtime_error("the run has no such trial");
  return named;
}

bool PrintCounts(const std::vector<Trial>& trials, const std::vector<TrialResult>& results) {
  std::map<std::string, Count> counts;
  std::size_t well = 0;
  for (std::size_t i = 0; i < trials.size(); ++i) {
    Count& count = counts[trials[i].kind];
    ++count.made;
    if (!results[i].is_well) continue;
    ++well;
    ++count.well;
    if (!results[i].text.empty()) ++count.remarks[results[i].text];
  }
  for (const auto& [kind, count] : counts) PrintCount(kind, count);
  std::printf("%zu tried, %zu ended well\n", trials.size(), well);
  return well == trials.size();
}

}  // namespace lab::sweeps
