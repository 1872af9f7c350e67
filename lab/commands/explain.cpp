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
#include "lab/images/image.h"
#include "lab/reports/discretion.h"
#include "lab/reports/effects_text.h"
#include "lab/runs/outcome.h"
#include "lab/runs/program_run.h"

namespace lab::commands {
namespace {

struct Request {
  std::filesystem::path image;
  ImageArguments limits;
  std::string build;
  std::string member;
  ProgramArguments program;
};

/// What an update does not come to has no effect on it, and that is to be known.
void TellHowItEnds(const RunResult& run) {
  const Outcome outcome = Judge(run).outcome;
  if (outcome == Outcome::Migrated || outcome == Outcome::MigratedWithFallbacks) return;
  std::cerr << "devicelab: the update of this device ends as " << OutcomeName(outcome)
            << "; what it does not come to counts as unused\n";
}

int Explain(const Request& request) {
  RequireImage(request.image);
  const std::filesystem::path program = ProgramToRun(request.program.program);
  BecomeRunner({program}, request.program.is_trusted);
  const Tree device = ReadImage(request.image, ToImageLimits(request.limits));
  const RunResult usual = RunOn(device, program, request.build);
  TellHowItEnds(usual);
  // Secrets that are sealed in the image are known by what the run made of them.
  Discretion discretion({}, usual.before);
  discretion.Learn(usual.after);
  const std::vector<Input> inputs = InputsOf(device);
  const unsigned workers = std::max(1U, std::thread::hardware_concurrency());
  PrintEffects(std::cout, FindEffects(device, inputs, program, request.build, workers), request.member,
               discretion);
  return 0;
}

}  // namespace

void AddExplain(CLI::App& app, Actions& actions) {
  CLI::App* const explain = app.add_subcommand(
      "explain", "Tell where values come from: change each entry of a device in turn and see what moves");
  const auto request = std::make_shared<Request>();
  explain->add_option("IMAGE", request->image, kImageHelp)->required();
  explain->add_option("--from", request->build, "The build number that the device had before")->required();
  explain->add_option("MEMBER", request->member, "Only what moves members with this in their path");
  AddImageArguments(*explain, request->limits);
  AddProgramArguments(*explain, request->program);
  actions[explain] = [request] { return Explain(*request); };
}

}  // namespace lab::commands
