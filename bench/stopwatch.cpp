#include "bench/stopwatch.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace bench {
namespace {

constexpr const char* kStopwatch = "/tmp/stopwatch";
constexpr const char* kResult = "/tmp/stopwatch.result";

const std::string& StopwatchProgram() {
  static const std::string bytes = [] {
    std::ifstream file(ProgramFolder() / "bench-stopwatch", std::ios::binary);
    if (!file) throw std::runtime_error("there is no bench-stopwatch beside this program");
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return bytes;
}

}  // namespace

Cost Measure(const std::filesystem::path& image, const Contestant& contestant) {
  lab::PrivateRoot root = MakeRoot(image, contestant);
  return Measure(root, contestant);
}

Cost Measure(lab::PrivateRoot& root, const Contestant& contestant) {
  root.Write(kStopwatch, StopwatchProgram(), 0755);
  RunContestant(root, contestant, {kStopwatch, kResult});
  std::istringstream result(root.Read(kResult));
  Cost cost;
  result >> cost.wall_nanoseconds >> cost.cpu_microseconds >> cost.peak_kilobytes;
  if (!result) throw std::runtime_error("the stopwatch wrote no result");
  return cost;
}

}  // namespace bench
