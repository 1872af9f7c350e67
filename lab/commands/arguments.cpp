#include "lab/commands/arguments.h"

#include <unistd.h>

#include <cstdint>
#include <stdexcept>

#include "lab/runs/namespaces.h"

namespace lab::commands {

namespace fs = std::filesystem;

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
  fs::path program = named;
  if (named.empty()) {
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    const fs::path installed = folder.parent_path() / "sbin" / kProgramName;
    program = folder / kProgramName;
    if (!fs::exists(program) && fs::exists(installed)) program = installed;
  }
  if (::access(program.c_str(), X_OK) != 0 || !fs::is_regular_file(program)) {
    throw std::runtime_error("there is no program " + program.native() +
                             ": build it, or name another with --program");
  }
  return program;
}

void BecomeRunner() {
  EnterNamespaces();
  if (const auto reason = WhyNotPossible()) throw std::runtime_error(*reason);
  KeepTemporaryFilesToThisProcess();
}

}  // namespace lab::commands
