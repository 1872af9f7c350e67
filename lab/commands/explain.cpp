#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/experiments/effects.h"
#include "lab/experiments/inputs.h"
#include "lab/images/tree.h"
#include "lab/reports/effects_text.h"

namespace lab::commands {
namespace {

struct Request {
  std::filesystem::path image;
  std::string build;
  std::string member;
  std::filesystem::path program;
};

int Explain(const Request& request) {
  RequireImage(request.image);
  const std::filesystem::path program = ProgramToRun(request.program);
  BecomeRunner();
  const std::vector<Input> inputs = InputsOf(ReadTree(request.image));
  const unsigned workers = std::max(1U, std::thread::hardware_concurrency());
  PrintEffects(std::cout, FindEffects(request.image, inputs, program, request.build, workers),
               request.member);
  return 0;
}

}  // namespace

void AddExplain(CLI::App& app, Actions& actions) {
  CLI::App* const explain = app.add_subcommand(
      "explain", "Tell where values come from: change each entry of a device in turn and see what moves");
  const auto request = std::make_shared<Request>();
  explain->add_option("IMAGE", request->image, "A folder that mirrors the device's files; it is only read")
      ->required();
  explain->add_option("--from", request->build, "The build number that the device had before")->required();
  explain->add_option("MEMBER", request->member, "Only what moves members with this in their path");
  explain->add_option("--program", request->program, "The program, if not the one beside devicelab");
  actions[explain] = [request] { return Explain(*request); };
}

}  // namespace lab::commands
