#include "bench/growth.h"

#include <array>
#include <cstdio>
#include <string>

#include "bench/instructions.h"
#include "bench/stopwatch.h"

namespace bench {
namespace {

constexpr const char* kDenyList = "/etc/hostapd/mac_filter/mf_deny.conf";
constexpr const char* kAllowList = "/etc/hostapd/mac_filter/mf_allow.conf";
constexpr int kFirstStep = 100;

/// Every section takes the same number of bytes: what grows is their number alone.
std::string FilterList(int stations) {
  std::string text;
  std::array<char, 128> section{};
  for (int station = 0; station < stations; ++station) {
    const auto number = static_cast<unsigned>(station);
    std::snprintf(section.data(), section.size(),
                  "[station_%06u]\nenable=yes\ndesc=Station %06u\nmac=02:00:%02x:%02x:%02x:%02x\n\n", number,
                  number, number >> 24U & 0xFFU, number >> 16U & 0xFFU, number >> 8U & 0xFFU, number & 0xFFU);
    text += section.data();
  }
  return text;
}

Contestant OnDeviceWith(int stations, Contestant program) {
  program.files[kDenyList] = FilterList(stations);
  program.files[kAllowList] = "";
  return program;
}

}  // namespace

std::vector<GrowthStep> MeasureGrowth(const std::filesystem::path& image, const Contestant& program,
                                      int most) {
  std::vector<GrowthStep> steps;
  if (!CanCountInstructions()) return steps;
  for (int stations = 0; stations <= most; stations = stations == 0 ? kFirstStep : stations * 10) {
    const Contestant contestant = OnDeviceWith(stations, program);
    GrowthStep step;
    step.stations = stations;
    step.instructions = CountInstructions(image, contestant).value_or(0);
    step.peak_kilobytes = Measure(image, contestant).peak_kilobytes;
    if (steps.size() >= 2) {
      const auto fixed = static_cast<double>(steps.front().instructions);
      step.ratio = (static_cast<double>(step.instructions) - fixed) /
                   (static_cast<double>(steps.back().instructions) - fixed);
    }
    steps.push_back(step);
  }
  return steps;
}

}  // namespace bench
