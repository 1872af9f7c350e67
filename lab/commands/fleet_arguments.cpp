#include "lab/commands/fleet_arguments.h"

#include <chrono>
#include <cmath>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "lab/text/utf8.h"

namespace lab::commands {

void AddFleetArguments(CLI::App& command, FleetArguments& arguments) {
  arguments.jobs = std::max(std::thread::hardware_concurrency(), 1U);
  command
      .add_option(
          "IMAGE", arguments.images,
          "Folders that mirror a device's files, tar archives of them (plain, gzip, xz, zstd), or @LIST: a "
          "file, or - for standard input, with a JSON object a line: {\"image\": PATH, \"from\": BUILD, "
          "\"files\": {DEVICE_PATH: TEXT}, \"boot\": {NAME: VALUE}}, all but image optional")
      ->required();
  command.add_option("--from", arguments.from, "The build number that the devices had before")->required();
  command.add_option("--overlay", arguments.overlays, "A folder or archive that is laid over every image")
      ->allow_extra_args(false);
  command.add_option("--jobs", arguments.jobs, "How many devices at a time")
      ->check(CLI::Range(1U, 1024U))
      ->capture_default_str();
  command
      .add_option("--limit", arguments.limit_seconds, "How many seconds the program may take for a device")
      ->check(CLI::Range(0.001, 86400.0))
      ->capture_default_str();
  AddImageArguments(command, arguments.image);
}

fleets::FleetOptions ToFleetOptions(const FleetArguments& arguments) {
  fleets::FleetOptions options;
  options.images = arguments.images;
  options.from = arguments.from;
  options.jobs = arguments.jobs;
  options.rehearsal.overlays = arguments.overlays;
  if (std::isnan(arguments.limit_seconds)) throw std::invalid_argument("--limit takes a number of seconds");
  options.rehearsal.limit = std::chrono::milliseconds(static_cast<long>(arguments.limit_seconds * 1000));
  options.rehearsal.image_limits = ToImageLimits(arguments.image);
  return options;
}

int StatusOf(const std::function<int()>& work) {
  try {
    const int status = work();
    if (!std::cout.flush()) throw std::runtime_error("cannot print all that there is to say");
    return status;
  } catch (const std::exception& error) {
    std::cerr << "devicelab: " << Printable(error.what()) << '\n';
    return kNotDone;
  }
}

}  // namespace lab::commands
