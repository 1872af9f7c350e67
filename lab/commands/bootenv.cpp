#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/commands/command.h"
#include "lab/images/boot_environment.h"

namespace lab::commands {
namespace {

struct Request {
  std::size_t size = 0;
  std::optional<unsigned> flag;
  std::filesystem::path output;
  std::vector<std::string> variables;
};

BootVariables ParseVariables(const std::vector<std::string>& texts) {
  BootVariables variables;
  for (const std::string& text : texts) {
    const std::size_t end = text.find('=');
    if (end == std::string::npos)
      throw std::runtime_error("not a variable with its value (name=value): " + text);
    variables[text.substr(0, end)] = text.substr(end + 1);
  }
  return variables;
}

int Make(const Request& request) {
  const BootVariables variables = ParseVariables(request.variables);
  const std::string image = request.flag ? RedundantBootEnvironment(variables, request.size,
                                                                    static_cast<std::uint8_t>(*request.flag))
                                         : BootEnvironment(variables, request.size);
  std::ofstream file(request.output, std::ios::binary | std::ios::trunc);
  file << image;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + request.output.native());
  std::cout << "Wrote " << request.output.native()
            << ". On the device, /etc/fw_env.config names it in the line\n"
            << BootEnvironmentConfigLine("<its path>", 0, request.size);
  return 0;
}

}  // namespace

void AddBootEnvironment(CLI::App& app, Actions& actions) {
  CLI::App* const boot = app.add_subcommand("bootenv", "Write a U-Boot environment");
  const auto request = std::make_shared<Request>();
  boot->add_option("--size", request->size, "Its size in bytes")->required();
  boot->add_option("--flag", request->flag,
                   "Make one of the two copies of a redundant environment, with this flag")
      ->check(CLI::Range(0, 255));
  boot->add_option("OUT", request->output, "The file to write")->required();
  boot->add_option("VARIABLE", request->variables, "name=value, as many as there are");
  actions[boot] = [request] { return Make(*request); };
}

}  // namespace lab::commands
