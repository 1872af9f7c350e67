#include "lab/fleets/summary.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/commands/command.h"
#include "lab/commands/fleet_arguments.h"
#include "lab/commands/fleet_page.h"
#include "lab/text/utf8.h"

namespace lab::commands {
namespace {

struct Request {
  std::vector<std::filesystem::path> files;
  std::filesystem::path junit;
  std::filesystem::path html;
  bool as_json = false;
};

int Run(const Request& request) {
  bool is_whole = true;
  const auto complain = [&](const std::string& text) {
    is_whole = false;
    std::cerr << "devicelab: " << PrintableLine(text) << '\n';
  };
  fleets::Summary summary;
  fleets::ForEachRecord(
      request.files, [&](const fleets::Record& record) { fleets::AddRecord(summary, record); }, complain);
  if (!request.junit.empty()) {
    std::ofstream file(request.junit, std::ios::binary | std::ios::trunc);
    fleets::WriteJUnit(file, summary, [&](const auto& visit) {
      fleets::ForEachRecord(request.files, visit, [](const std::string&) {});
    });
    file.close();
    if (!file) throw std::runtime_error("cannot write " + request.junit.native());
  }
  if (!request.html.empty()) WriteFleetPage(request.html, request.files, complain);
  if (request.as_json) {
    std::cout << fleets::SummaryJson(summary);
  } else {
    fleets::PrintSummary(std::cout, summary);
  }
  return is_whole ? 0 : kNotDone;
}

}  // namespace

void AddSummary(CLI::App& app, Actions& actions) {
  CLI::App* const summary = app.add_subcommand(
      "summary", "Tell what the records of fleets come to; of a device the last one counts");
  const auto request = std::make_shared<Request>();
  summary->add_option("FILE", request->files, "What \"fleet\" wrote")->required();
  summary->add_flag("--json", request->as_json, "Print one JSON object");
  summary->add_option("--junit", request->junit, "Write a report for a CI server, a test case a device");
  summary->add_option(
      "--html", request->html,
      "Write a page for a browser, with the households of records that have them (fleet --details)");
  actions[summary] = [request] { return StatusOf([&] { return Run(*request); }); };
}

}  // namespace lab::commands
