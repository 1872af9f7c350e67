#include "lab/fleets/fleet.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/commands/fleet_arguments.h"
#include "lab/commands/fleet_page.h"
#include "lab/fleets/summary.h"
#include "lab/page/page_file.h"
#include "lab/text/utf8.h"

namespace lab::commands {
namespace {

struct Request {
  FleetArguments fleet;
  ProgramArguments program;
  std::filesystem::path output;
  std::filesystem::path html;
  bool with_household = false;
  std::vector<std::string> fail_on{"failed", "crashed", "timed-out"};
};

int Run(const Request& request) {
  fleets::FleetOptions options = ToFleetOptions(request.fleet);
  options.output = request.output;
  options.rehearsal.with_household = request.with_household || !request.html.empty();
  if (request.fail_on != std::vector<std::string>{"none"}) {
    options.fail_on = std::set(request.fail_on.begin(), request.fail_on.end());
  }
  fleets::RequireKnown(options.fail_on);
  options.rehearsal.program = ProgramToRun(request.program.program);
  if (!request.html.empty()) page::RequirePageFile(request.html);
  BecomeRunner({options.rehearsal.program}, request.program.is_trusted);
  bool is_whole = fleets::RehearseFleet(options, std::cerr, ::isatty(STDERR_FILENO) == 1);

  fleets::Summary summary;
  bool is_failed = false;
  const auto add = [&](const fleets::Record& record) {
    fleets::AddRecord(summary, record);
    is_failed = is_failed || fleets::IsNamedIn(options.fail_on, record);
  };
  fleets::ForEachRecord({options.output}, add, [](const std::string&) {});
  fleets::PrintSummary(std::cout, summary);
  if (!request.html.empty()) {
    WriteFleetPage(request.html, {options.output}, [&](const std::string& text) {
      is_whole = false;
      std::cerr << "devicelab: " << PrintableLine(text) << '\n';
    });
  }
  if (!is_whole) return kNotDone;
  return is_failed ? 1 : 0;
}

}  // namespace

void AddFleet(CLI::App& app, Actions& actions) {
  CLI::App* const fleet = app.add_subcommand(
      "fleet",
      "Run the program on many devices, with a record each; exit status 1 where one failed, 2 where the "
      "command itself could not do its work");
  const auto request = std::make_shared<Request>();
  AddFleetArguments(*fleet, request->fleet);
  fleet
      ->add_option("--output", request->output,
                   "The file that gets a line a device; where it has some, the command goes on behind them")
      ->required();
  fleet->add_option("--fail-on", request->fail_on, "Outcomes and findings that give exit status 1, or none")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->capture_default_str();
  fleet->add_flag("--details", request->with_household,
                  "Add the household before and after to each line, as \"run --json\" prints it");
  fleet->add_option(
      "--html", request->html,
      "Write the fleet as a page for a browser, with each household before and after (--details)");
  AddProgramArguments(*fleet, request->program);
  actions[fleet] = [request] { return StatusOf([&] { return Run(*request); }); };
}

}  // namespace lab::commands
