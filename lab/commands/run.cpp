#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/images/private_root.h"
#include "lab/reports/report.h"
#include "lab/runs/program_run.h"

namespace lab::commands {
namespace {

namespace fs = std::filesystem;

/// The shell's own statuses for a command that was killed.
constexpr int kTimedOutStatus = 124;
constexpr int kSignalStatus = 128;

struct Request {
  fs::path image;
  std::string build;
  fs::path program;
};

/// On a copy of the image, which is gone when the run is over.
RunResult RunOnCopy(const fs::path& image, const fs::path& program, const std::string& build) {
  PrivateRoot device(image);
  return RunProgram(device, program, {"--update-config", build});
}

int Run(const Request& request) {
  RequireImage(request.image);
  const fs::path program = ProgramToRun(request.program);
  BecomeRunner();

  const RunResult result = RunOnCopy(request.image, program, request.build);
  PrintReport(std::cout, program.filename().native() + " --update-config " + request.build, result);
  if (result.timed_out) return kTimedOutStatus;
  return result.signal != 0 ? kSignalStatus + result.signal : result.status;
}

}  // namespace

void AddRun(CLI::App& app, Actions& actions) {
  CLI::App* const run =
      app.add_subcommand("run", "Run the program on a copy of a device image and tell what it did");
  const auto request = std::make_shared<Request>();
  run->add_option("IMAGE", request->image, "A folder that mirrors the device's files; it is only read")
      ->required();
  run->add_option("--from", request->build, "The build number that the device had before")->required();
  run->add_option("--program", request->program, "The program, if not the one beside devicelab");
  actions[run] = [request] { return Run(*request); };
}

}  // namespace lab::commands
