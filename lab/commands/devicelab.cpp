// Rehearses an update on device images: lays them out in private roots, runs the program there and tells what
// it did; shows images and helps to make them. Its sub-commands have a file each.

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/text/utf8.h"

namespace {

/// The first argument has to be a command, or an option that needs none.
void RequireCommand(const CLI::App& app, int argument_count, char* arguments[]) {
  const std::string first = argument_count > 1 ? arguments[1] : "";
  if (first.starts_with('-')) return;
  std::string names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->check_name(first)) return;
    names += (names.empty() ? "" : ", ") + command->get_name();
  }
  throw std::runtime_error((first.empty() ? "name a command: " : "there is no command " + first + ": ") +
                           names + "; --help tells more");
}

int RunCommand(int argument_count, char* arguments[]) {
  CLI::App app("Runs " + std::string(lab::commands::kProgramName) + " on device images, and makes them.");
  app.require_subcommand(1);
  app.set_version_flag("--version", "devicelab " KELP_VERSION);

  lab::commands::Actions actions;
  lab::commands::AddRun(app, actions);
  lab::commands::AddExplain(app, actions);
  lab::commands::AddFleet(app, actions);
  lab::commands::AddSummary(app, actions);
  lab::commands::AddCompare(app, actions);
  lab::commands::AddNew(app, actions);
  lab::commands::AddShow(app, actions);
  lab::commands::AddDescribe(app, actions);
  lab::commands::AddSeal(app, actions);
  lab::commands::AddBootEnvironment(app, actions);

  RequireCommand(app, argument_count, arguments);
  try {
    app.parse(argument_count, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : lab::commands::kNotDone;
  }
  return actions.at(app.get_subcommands().front())();
}

}  // namespace

int main(int argument_count, char* arguments[]) {
  try {
    const int status = RunCommand(argument_count, arguments);
    // Who ends with kNotDone has said why.
    if (status != lab::commands::kNotDone && !std::cout.flush())
      throw std::runtime_error("cannot print all that there is to say");
    return status;
  } catch (const std::exception& error) {
    std::cerr << "devicelab: " << lab::Printable(error.what()) << '\n';
    return 1;
  }
}
