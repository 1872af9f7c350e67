#include "lab/fleets/compare.h"

#include <cstddef>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/commands/fleet_arguments.h"
#include "lab/page/page.h"
#include "lab/page/page_file.h"
#include "lab/plain/plain_way.h"
#include "lab/text/json.h"
#include "lab/text/utf8.h"

namespace lab::commands {
namespace {

struct Request {
  FleetArguments fleet;
  std::filesystem::path old_program;
  std::filesystem::path new_program;
  bool are_trusted = false;
  std::filesystem::path html;
  bool as_json = false;
};

void Print(const fleets::ComparedDevice& device) {
  const auto side = [](const std::string& text) {
    return text.empty() ? std::string("(none)") : PrintableLine(text);
  };
  std::cout << PrintableLine(device.image) << " from " << PrintableLine(device.from) << '\n';
  for (const fleets::Difference& difference : device.differences) {
    std::cout << "    " << PrintableLine(difference.what) << ": " << side(difference.was) << " -> "
              << side(difference.now) << '\n';
  }
}

int Run(const Request& request) {
  const std::filesystem::path old_program = ProgramToRun(request.old_program);
  const std::filesystem::path new_program = ProgramToRun(request.new_program);
  if (!request.html.empty()) page::RequirePageFile(request.html);
  BecomeRunner({old_program, new_program}, request.are_trusted);
  page::Page page(page::Kind::Comparison);
  std::size_t devices = 0;
  std::size_t different = 0;
  const auto tell = [&](const fleets::ComparedDevice& device) {
    ++devices;
    if (device.differences.empty()) {
      page.AddUnchanged();
      return;
    }
    ++different;
    if (!request.html.empty()) page.Add(fleets::ComparedLine(device));
    if (request.as_json) {
      std::string line = fleets::ComparedLine(device);
      if (IsPlainWay()) line.insert(line.size() - 1, ",\"notKeptApart\":" + JsonLine(NotKeptApart()));
      std::cout << line << '\n';
    } else {
      Print(device);
    }
  };
  const bool is_whole =
      fleets::CompareFleet(ToFleetOptions(request.fleet), old_program, new_program, tell, std::cerr);
  if (!request.html.empty()) page::WritePageFile(request.html, page.Html());
  if (!request.as_json) {
    std::cout << different << " of " << devices << " devices differ\n";
  }
  if (!is_whole) return kNotDone;
  return different > 0 ? 1 : 0;
}

}  // namespace

void AddCompare(CLI::App& app, Actions& actions) {
  CLI::App* const compare = app.add_subcommand(
      "compare",
      "Run two versions of the program on the same devices and tell what differs, setting by setting; "
      "exit status 1 where anything does");
  const auto request = std::make_shared<Request>();
  AddFleetArguments(*compare, request->fleet);
  compare->add_option("--old", request->old_program, "The program as it was")->required();
  compare->add_option("--new", request->new_program, "The program as it is to be")->required();
  AddTrustArgument(*compare, request->are_trusted);
  compare->add_option("--html", request->html, "Write the differences as a page for a browser");
  compare->add_flag("--json", request->as_json, "Print a JSON object on a line for each device that differs");
  actions[compare] = [request] { return StatusOf([&] { return Run(*request); }); };
}

}  // namespace lab::commands
