// Lays a device image out in a private root, runs the program there and tells what it did; shows images and
// helps to make them.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "lab/images/boot_environment.h"
#include "lab/images/namespaces.h"
#include "lab/images/private_root.h"
#include "lab/images/secret_seal.h"
#include "lab/images/tree.h"
#include "lab/reports/report.h"
#include "lab/runs/program_run.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kProgramName = "kelpwifiupdater";

/// The shell's own statuses for a command that was killed.
constexpr int kTimedOutStatus = 124;
constexpr int kSignalStatus = 128;

struct Request {
  fs::path image;
  std::string build;
  fs::path program;
  fs::path key_file;
  std::string text;
  std::size_t size = 0;
  std::optional<unsigned> flag;
  fs::path output;
  std::vector<std::string> variables;
};

fs::path ProgramBeside() {
  return fs::read_symlink("/proc/self/exe").parent_path() / kProgramName;
}

void RequireImage(const fs::path& image) {
  if (!fs::exists(image)) throw std::runtime_error("there is no device image " + image.native());
  if (!fs::is_directory(image)) {
    throw std::runtime_error(image.native() +
                             " is no device image: that is a folder with a device's files in it");
  }
}

void RequireProgram(const fs::path& program) {
  if (::access(program.c_str(), X_OK) == 0 && fs::is_regular_file(program)) return;
  throw std::runtime_error("there is no program " + program.native() +
                           ": build it, or name another with --program");
}

/// On a copy of the image, which is gone when the run is over.
lab::RunResult RunOnCopy(const fs::path& image, const fs::path& program, const std::string& build) {
  lab::PrivateRoot device(image);
  return lab::RunProgram(device, program, {"--update-config", build});
}

int Run(const Request& request) {
  RequireImage(request.image);
  const fs::path program = request.program.empty() ? ProgramBeside() : request.program;
  RequireProgram(program);
  lab::EnterNamespaces();
  if (const auto reason = lab::WhyNotPossible()) throw std::runtime_error(*reason);
  lab::KeepTemporaryFilesToThisProcess();

  const lab::RunResult result = RunOnCopy(request.image, program, request.build);
  lab::PrintReport(std::cout, program.filename().native() + " --update-config " + request.build, result);
  if (result.timed_out) return kTimedOutStatus;
  return result.signal != 0 ? kSignalStatus + result.signal : result.status;
}

int Show(const Request& request) {
  RequireImage(request.image);
  lab::PrintTree(std::cout, lab::ReadTree(request.image));
  return 0;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.native());
  return {std::istreambuf_iterator<char>(file), {}};
}

int Seal(const Request& request) {
  std::cout << lab::SealSecret(request.text, ReadFile(request.key_file)) << '\n';
  return 0;
}

lab::BootVariables ParseVariables(const std::vector<std::string>& texts) {
  lab::BootVariables variables;
  for (const std::string& text : texts) {
    const std::size_t end = text.find('=');
    if (end == std::string::npos)
      throw std::runtime_error("not a variable with its value (name=value): " + text);
    variables[text.substr(0, end)] = text.substr(end + 1);
  }
  return variables;
}

int MakeBootEnvironment(const Request& request) {
  const lab::BootVariables variables = ParseVariables(request.variables);
  const std::string image =
      request.flag
          ? lab::RedundantBootEnvironment(variables, request.size, static_cast<std::uint8_t>(*request.flag))
          : lab::BootEnvironment(variables, request.size);
  std::ofstream file(request.output, std::ios::binary | std::ios::trunc);
  file << image;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + request.output.native());
  std::cout << "Wrote " << request.output.native()
            << ". On the device, /etc/fw_env.config names it in the line\n"
            << lab::BootEnvironmentConfigLine("<its path>", 0, request.size);
  return 0;
}

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
  Request request;
  CLI::App app("Runs " + std::string(kProgramName) + " on device images, and makes them.");
  app.require_subcommand(1);
  app.set_version_flag("--version", "devicelab " KELP_VERSION);

  CLI::App* run =
      app.add_subcommand("run", "Run the program on a copy of a device image and tell what it did");
  run->add_option("IMAGE", request.image, "A folder that mirrors the device's files; it is only read")
      ->required();
  run->add_option("--from", request.build, "The build number that the device had before")->required();
  run->add_option("--program", request.program, "The program, if not the one beside devicelab");

  CLI::App* show = app.add_subcommand("show", "List a device image, with the content of its text files");
  show->add_option("IMAGE", request.image, "A folder that mirrors the device's files")->required();

  CLI::App* seal = app.add_subcommand("seal", "Print a secret as a device stores it");
  seal->add_option("--key-file", request.key_file, "The device's /usr/kelp/etc/secret.key")->required();
  seal->add_option("TEXT", request.text, "The secret")->required();

  CLI::App* boot = app.add_subcommand("bootenv", "Write a U-Boot environment");
  boot->add_option("--size", request.size, "Its size in bytes")->required();
  boot->add_option("--flag", request.flag,
                   "Make one of the two copies of a redundant environment, with this flag")
      ->check(CLI::Range(0, 255));
  boot->add_option("OUT", request.output, "The file to write")->required();
  boot->add_option("VARIABLE", request.variables, "name=value, as many as there are");

  RequireCommand(app, argument_count, arguments);
  CLI11_PARSE(app, argument_count, arguments);
  if (run->parsed()) return Run(request);
  if (show->parsed()) return Show(request);
  if (seal->parsed()) return Seal(request);
  return MakeBootEnvironment(request);
}

}  // namespace

int main(int argument_count, char* arguments[]) {
  try {
    const int status = RunCommand(argument_count, arguments);
    if (!std::cout.flush()) throw std::runtime_error("cannot print all that there is to say");
    return status;
  } catch (const std::exception& error) {
    std::cerr << "devicelab: " << error.what() << '\n';
    return 1;
  }
}
