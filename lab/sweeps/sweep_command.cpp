#include "lab/sweeps/sweep_command.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

namespace lab::sweeps {

void AddSubject(CLI::App& app, Subject& subject) {
  app.add_option("device", subject.image, "folder with the device image")
      ->required()
      ->check(CLI::ExistingDirectory);
  app.add_option("--from", subject.build_number, "build number that the device is updated from")->required();
  app.add_option("--workers", subject.workers, "processes at a time");
}

int RunCommand(const char* name, const std::function<int()>& command) {
  try {
    return command();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", name, error.what());
    return 2;
  }
}

}  // namespace lab::sweeps
