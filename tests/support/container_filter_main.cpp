// Usage: container-filter [--and-chroot | --mounts-alone] COMMAND [ARGUMENT...]
//
// Runs a command with the system calls refused that a container refuses by default.

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string_view>

#include "tests/support/container_filter.h"

int main(int argument_count, char* arguments[]) {
  using testing_support::Refused;
  char** command = arguments + 1;
  Refused refused = Refused::AsInContainer;
  const std::string_view first = argument_count > 1 ? *command : "";
  if (first == "--and-chroot") refused = Refused::AndChroot;
  if (first == "--mounts-alone") refused = Refused::MountsAlone;
  if (first.starts_with("--")) ++command;
  try {
    testing_support::Refuse(refused);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "container-filter: %s\n", error.what());
    return 127;
  }
  if (*command != nullptr) ::execvp(*command, command);
  std::perror("container-filter");
  return 127;
}
