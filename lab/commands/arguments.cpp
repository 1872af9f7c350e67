#include "lab/commands/arguments.h"

#include <unistd.h>

#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "lab/plain/plain_way.h"
#include "lab/runs/namespaces.h"

namespace lab::commands {

namespace fs = std::filesystem;

namespace {

/// The program beside devicelab, or in the sbin folder beside its own.
fs::path OwnProgram() {
  const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path program = folder / kProgramName;
  const fs::path installed = folder.parent_path() / "sbin" / kProgramName;
  return !fs::exists(program) && fs::exists(installed) ? installed : program;
}

void RequireOwn(const fs::path& program) {
  std::error_code ignored;
  if (fs::equivalent(program, OwnProgram(), ignored)) return;
  throw std::runtime_error(
      "in this container nothing keeps " + program.native() +
      " from leaving the device: give --trust-program as well if it may run here as root");
}

}  // namespace

void AddProgramArguments(CLI::App& command, ProgramArguments& arguments) {
  command.add_option("--program", arguments.program, "The program, if not the one beside devicelab");
  AddTrustArgument(command, arguments.is_trusted);
}

void AddTrustArgument(CLI::App& command, bool& is_trusted) {
  command.add_flag(
      "--trust-program", is_trusted,
      "Run a program other than the one beside devicelab also in a container that cannot shut it off");
}

void AddImageArguments(CLI::App& command, ImageArguments& arguments) {
  command.add_option("--max-megabytes", arguments.megabytes, "How much an image may hold, unpacked")
      ->check(CLI::Range(1U, 65536U))
      ->capture_default_str();
  command
      .add_option("--max-entries", arguments.entries, "How many files, folders and links an image may hold")
      ->check(CLI::Range(std::size_t{1}, std::size_t{100'000'000}))
      ->capture_default_str();
}

ImageLimits ToImageLimits(const ImageArguments& arguments) {
  return {std::uintmax_t{arguments.megabytes} << 20U, arguments.entries};
}

void RequireImage(const fs::path& image) {
  if (!fs::exists(image)) throw std::runtime_error("there is no device image " + image.native());
}

fs::path ProgramToRun(const fs::path& named) {
  const fs::path program = named.empty() ? OwnProgram() : named;
  if (::access(program.c_str(), X_OK) != 0 || !fs::is_regular_file(program)) {
    throw std::runtime_error("there is no program " + program.native() +
                             ": build it, or name another with --program");
  }
  return program;
}

void BecomeRunner(const std::vector<fs::path>& programs, bool are_trusted) {
  EnterNamespaces();
  if (IsPlainWay() && !are_trusted) {
    for (const fs::path& program : programs) RequireOwn(program);
  }
  KeepTemporaryFilesToThisProcess();
  if (IsPlainWay()) std::cerr << "devicelab: " << PlainWayNotice() << std::flush;
}

Json::Value NotKeptApart() {
  Json::Value names(Json::arrayValue);
  for (const std::string_view name : kNotKeptApart) names.append(std::string(name));
  return names;
}

}  // namespace lab::commands
