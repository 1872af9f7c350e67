#include "cli/command_line.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "cli/console.h"
#include "cli/update_handler.h"

namespace KELP::Wifi::Updater {
namespace {

using Handler = std::function<int(const std::string& value)>;
using OptionTable = std::map<std::string, Handler, std::less<>>;

constexpr int kUsageError = 1;

int PrintUsage() {
  WriteToStandardOutput({"Usage: kelpwifiupdater option\n"});
  WriteToStandardOutput({"  Options: \n"});
  WriteToStandardOutput(
      {"    --update-config oldBuildNumber     update config from old build number to current.\n"});
  WriteToStandardOutput({"\n"});
  return kUsageError;
}

}  // namespace

int RunCommandLine(int argument_count, const char* const* arguments) {
  const OptionTable options{{"--update-config", UpdateConfig}};

  if (argument_count < 2) return PrintUsage();

  const std::string_view word = arguments[1];
  const auto option = options.find(word);
  if (option == options.end()) {
    WriteToStandardError({"Invalid option: ", word, "\n\n"});
    return PrintUsage();
  }
  if (argument_count < 3) {
    WriteToStandardError({"Need to provide build number.\n\n"});
    return PrintUsage();
  }
  return option->second(arguments[2]);
}

}  // namespace KELP::Wifi::Updater
