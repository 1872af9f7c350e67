#include "lab/commands/arguments.h"

#include <unistd.h>

#include <stdexcept>

#include "lab/images/namespaces.h"

namespace lab::commands {

namespace fs = std::filesystem;

void RequireImage(const fs::path& image) {
  if (!fs::exists(image)) throw std::runtime_error("there is no device image " + image.native());
  if (!fs::is_directory(image)) {
    throw std::runtime_error(image.native() +
                             " is no device image: that is a folder with a device's files in it");
  }
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
