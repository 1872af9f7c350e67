#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "bench/report.h"

namespace bench {
namespace {

constexpr int kWidth = 720;
constexpr int kLeft = 120;  // where bars start
constexpr int kLongestBar = 480;
constexpr int kBarHeight = 18;
constexpr int kBarDistance = 24;
constexpr int kPanelHeight = 34;  // beside its bars
constexpr int kTop = 44;

struct Bar {
  std::string label;
  double value = 0;
  bool is_program = false;
};

struct Panel {
  std::string title;
  int decimals = 0;
  std::vector<Bar> bars;

  int Height() const { return kPanelHeight + kBarDistance * static_cast<int>(bars.size()); }
};

template <typename Value>
Panel MakePanel(const Comparison& comparison, std::string title, int decimals, Value value) {
  Panel panel{std::move(title), decimals, {}};
  for (const Figures* figures :
       {&comparison.program, &comparison.peer, &comparison.floor, &comparison.empty}) {
    const std::optional<double> measured = value(*figures);
    if (measured) panel.bars.push_back({figures->name, *measured, figures == &comparison.program});
  }
  return panel;
}

std::optional<double> Part(const std::optional<Times>& times, double Times::*part) {
  if (!times) return std::nullopt;
  return (*times).*part;
}

std::vector<Panel> Panels(const Comparison& comparison) {
  using Measured = std::optional<double>;
  constexpr double kMillion = 1e6;
  constexpr double kKibi = 1024;
  std::vector<Panel> panels{
      MakePanel(comparison, "CPU time of a run with its files in memory, ms", 1,
                [&](const Figures& f) { return Part(f.in_memory, &Times::cpu_milliseconds); }),
      MakePanel(comparison, "CPU time of a run with its files on disk, ms", 1,
                [&](const Figures& f) { return Part(f.on_disk, &Times::cpu_milliseconds); }),
      MakePanel(comparison, "Wall time of a run with its files on disk, ms", 1,
                [&](const Figures& f) { return Part(f.on_disk, &Times::wall_milliseconds); }),
      MakePanel(comparison, "Instructions of a run, millions", 1,
                [](const Figures& f) -> Measured {
                  if (!f.instructions) return std::nullopt;
                  return static_cast<double>(*f.instructions) / kMillion;
                }),
      MakePanel(comparison, "Peak memory of the largest process, MiB", 1,
                [](const Figures& f) -> Measured { return static_cast<double>(f.peak_kilobytes) / kKibi; }),
  };
  std::erase_if(panels, [](const Panel& panel) { return panel.bars.empty(); });
  return panels;
}

void Draw(std::ostream& out, const Panel& panel, int top) {
  const auto longest = std::max_element(panel.bars.begin(), panel.bars.end(),
                                        [](const Bar& a, const Bar& b) { return a.value < b.value; });
  out << "  <text class=\"title\" x=\"16\" y=\"" << top + 14 << "\">" << panel.title << "</text>\n";
  int y = top + 24;
  for (const Bar& bar : panel.bars) {
    const double length = std::max(1.0, kLongestBar * bar.value / longest->value);
    const int baseline = y + 13;
    out << "  <text x=\"" << kLeft - 8 << "\" y=\"" << baseline << "\" text-anchor=\"end\">" << bar.label
        << "</text>\n"
        << "  <rect class=\"" << (bar.is_program ? "program" : "other") << "\" x=\"" << kLeft << "\" y=\""
        << y << "\" width=\"" << std::setprecision(1) << length << "\" height=\"" << kBarHeight << "\"/>\n"
        << "  <text x=\"" << kLeft + length + 6 << "\" y=\"" << baseline << "\">"
        << std::setprecision(panel.decimals) << bar.value << "</text>\n";
    y += kBarDistance;
  }
}

}  // namespace

std::string ToChart(const Comparison& comparison) {
  const std::vector<Panel> panels = Panels(comparison);
  int height = kTop;
  for (const Panel& panel : panels) height += panel.Height();

  std::ostringstream out;
  out << std::fixed << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << kWidth << R"(" height=")"
      << height << R"(" viewBox="0 0 )" << kWidth << ' ' << height << R"(" role="img">
  <title>What a migration costs</title>
  <style>
    text { font: 13px sans-serif; fill: #24292f; }
    .title { font-weight: bold; }
    .program { fill: #1f6feb; }
    .other { fill: #8c959f; }
  </style>
  <rect width="100%" height="100%" fill="#ffffff"/>
  <text x="16" y="24">Migration of )"
      << comparison.device << ", medians of " << comparison.runs << " runs</text>\n";
  int top = kTop;
  for (const Panel& panel : panels) {
    Draw(out, panel, top);
    top += panel.Height();
  }
  out << "</svg>\n";
  return out.str();
}

}  // namespace bench
