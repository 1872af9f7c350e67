#include "lab/commands/fleet_arguments.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <limits>
#include <thread>

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
  command.add_option("--overlay", arguments.overlays, "A folder or archive that is laid over every image");
  command.add_option("--jobs", arguments.jobs, "How many devices at a time")
      ->check(CLI::Range(1U, 1024U))
      ->capture_default_str();
  command
      .add_option("--limit", arguments.limit_seconds, "How many seconds the program may take for a device")
      ->check(CLI::Range(0.001, 86400.0))
      ->capture_default_str();
  command.add_option("--max-megabytes", arguments.megabytes, "How much an image may hold, unpacked")
      ->check(CLI::Range(1U, 65536U))
      ->capture_default_str();
  command
      .add_option("--max-entries", arguments.entries, "How many files, folders and links an image may hold")
      ->check(CLI::Range(std::size_t{1}, std::size_t{100'000'000}))
      ->capture_default_str();
}

fleets::FleetOptions ToFleetOptions(const FleetArguments& arguments) {
  fleets::FleetOptions options;
  options.images = arguments.images;
  options.from = arguments.from;
  options.jobs = arguments.jobs;
  options.rehearsal.overlays = arguments.overlays;
  options.rehearsal.limit = std::chrono::milliseconds(static_cast<long>(arguments.limit_seconds * 1000));
  options.rehearsal.image_limits.bytes = std::uintmax_t{arguments.megabytes} << 20U;
  options.rehearsal.image_limits.entries = arguments.entries;
  return options;
}

int StatusOf(const std::function<int()>& work) {
  try {
    return work();
  } catch (const std::exception& error) {
    std::cerr << "devicelab: " << error.what() << '\n';
    return kNotDone;
  }
}

}  // namespace lab::commands
