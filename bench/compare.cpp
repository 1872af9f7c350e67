// Measures a migration beside a shell script that does the same, beside the bare file operations and beside a
// program that does nothing, all on the same device image.

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "bench/comparison.h"
#include "bench/report.h"
#include "lab/images/namespaces.h"

namespace {

namespace fs = std::filesystem;

void WriteFile(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.native());
}

}  // namespace

int main(int argument_count, char* arguments[]) {
  bench::Device device{fs::path(KELP_DEVICES) / "tri-band-mesh-router", "8000"};
  bench::ComparisonOptions options;
  fs::path json = bench::ProgramFolder() / "bench.json";
  fs::path chart;

  CLI::App app("Measures what a migration costs.");
  app.add_option("--device", device.image, "The device image to migrate (the tri-band sample)");
  app.add_option("--from", device.build_number, "The build number that it is updated from")
      ->capture_default_str();
  app.add_option("--runs", options.runs, "Runs of each contestant, whose median counts")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--stations", options.most_stations,
                 "How far the filter list grows; 0 leaves the growth out")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  app.add_option("--json", json, "Where to write all figures for a machine (bench.json beside this program)");
  app.add_option("--chart", chart, "Where to write a bar chart (SVG); none without it");
  CLI11_PARSE(app, argument_count, arguments);

  try {
    lab::EnterNamespaces();
    const bench::Comparison comparison = bench::Compare(device, options);
    bench::PrintTable(std::cout, comparison);
    WriteFile(json, bench::ToJson(comparison));
    if (!chart.empty()) WriteFile(chart, bench::ToChart(comparison));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "bench-compare: " << error.what() << '\n';
    return 1;
  }
}
