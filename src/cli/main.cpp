#include "cli/command_line.h"
#include "cli/console.h"
#include "cli/process.h"

int main(int argument_count, char* arguments[]) {
  using namespace KELP::Wifi::Updater;
  SecureStandardStreams();
  LetWritesFail();
  ReportWhatNobodyCatches(argument_count > 2 ? arguments[2] : "");
  return RunCommandLine(argument_count, arguments);
}
