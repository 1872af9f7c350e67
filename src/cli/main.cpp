#include "cli/command_line.h"
#include "cli/console.h"

int main(int argument_count, char* arguments[]) {
  KELP::Wifi::Updater::SecureStandardStreams();
  return KELP::Wifi::Updater::RunCommandLine(argument_count, arguments);
}
