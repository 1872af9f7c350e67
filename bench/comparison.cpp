#include "bench/comparison.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "bench/instructions.h"
#include "bench/peer_check.h"
#include "bench/sizes.h"
#include "bench/stopwatch.h"
#include "bench/storage.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr double kMicrosecondsPerMillisecond = 1e3;
constexpr double kNanosecondsPerMillisecond = 1e6;

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

struct Entrant {
  Contestant contestant;
  Figures* figures;
};

struct Samples {
  std::vector<double> cpu;
  std::vector<double> wall;
};

lab::RunResult RunOnce(const Device& device, const Contestant& contestant) {
  lab::PrivateRoot root = MakeRoot(device.image, contestant);
  return RunContestant(root, contestant, kNoWrapper);
}

void RequireSameDocuments(const lab::RunResult& program, const lab::RunResult& peer) {
  const std::vector<std::string> differences = DocumentDifferences(program.after, peer.after);
  if (differences.empty()) return;
  std::string text = "the shell script does not do the same:";
  for (const std::string& difference : differences) text += "\n  " + difference;
  throw std::runtime_error(text);
}

/// With the devices in `folder`. In turn, so that whatever else happens on this machine hits all alike.
void MeasureTimes(const fs::path& folder, std::optional<Times> Figures::*times, const Device& device,
                  const std::vector<Entrant>& entrants, int runs) {
  const Storage storage(folder);
  std::vector<Samples> samples(entrants.size());
  for (int run = 0; run < runs; ++run) {
    for (std::size_t i = 0; i < entrants.size(); ++i) {
      const Cost cost = Measure(device.image, entrants[i].contestant);
      samples[i].cpu.push_back(static_cast<double>(cost.cpu_microseconds) / kMicrosecondsPerMillisecond);
      samples[i].wall.push_back(static_cast<double>(cost.wall_nanoseconds) / kNanosecondsPerMillisecond);
      std::int64_t& peak = entrants[i].figures->peak_kilobytes;
      peak = std::max(peak, cost.peak_kilobytes);
    }
  }
  for (std::size_t i = 0; i < entrants.size(); ++i) {
    entrants[i].figures->*times = {Median(std::move(samples[i].cpu)), Median(std::move(samples[i].wall))};
  }
}

OtherDevice MeasureOther(std::string name, const Device& device, const Contestant& program) {
  OtherDevice other{std::move(name), CountInstructions(device.image, program), std::nullopt};
  if (CanCountSystemCalls()) other.calls = CountSystemCalls(device.image, program);
  return other;
}

}  // namespace

Comparison Compare(const Device& device, const ComparisonOptions& options) {
  Comparison comparison;
  comparison.device = device.image.filename();
  comparison.runs = options.runs;

  const Contestant program = MakeProgram(device);
  const Contestant peer = MakePeer();
  const lab::RunResult run = RunOnce(device, program);
  RequireSameDocuments(run, RunOnce(device, peer));

  Recording recording;
  if (CanCountSystemCalls()) recording = Record(device.image, program);
  comparison.calls_from_main = recording.from_main;
  comparison.opens = recording.opens;

  const std::vector<Entrant> entrants{{program, &comparison.program},
                                      {peer, &comparison.peer},
                                      {MakeFloor(recording.inputs, run), &comparison.floor},
                                      {MakeEmpty(), &comparison.empty}};
  if (const auto folder = FolderInMemory()) {
    MeasureTimes(*folder, &Figures::in_memory, device, entrants, options.runs);
  }
  if (const auto folder = FolderOnDisk()) {
    MeasureTimes(*folder, &Figures::on_disk, device, entrants, options.runs);
  }
  for (const auto& [contestant, figures] : entrants) {
    figures->name = contestant.name;
    figures->instructions = CountInstructions(device.image, contestant);
    if (CanCountSystemCalls()) figures->calls = CountSystemCalls(device.image, contestant);
    if (figures != &comparison.peer) figures->stripped_bytes = StrippedSize(contestant.program);
  }
  if (CanCountSystemCalls()) {
    comparison.program.bytes_with_libraries =
        *comparison.program.stripped_bytes + SizeOf(recording.libraries);
  }
  comparison.others.push_back(
      MeasureOther("access-point files empty", device, OnSparseDevice(device.image, program)));
  comparison.others.push_back(
      MeasureOther("no access-point files", device, OnBareDevice(device.image, program)));
  comparison.growth = MeasureGrowth(device.image, program, options.most_stations);
  return comparison;
}

}  // namespace bench
