#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "lab/commands/command.h"
#include "lab/commands/fleet_arguments.h"
#include "lab/fleets/synthetic_devices.h"
#include "lab/images/tar_text.h"

namespace lab::commands {
namespace {

namespace fs = std::filesystem;

constexpr const char* kListName = "list.jsonl";
constexpr const char* kSecretKey = "/usr/kelp/etc/secret.key";

struct Request {
  fs::path folder;
  std::size_t count = 0;
  std::uint64_t seed = 0;
  bool as_archives = false;
  bool plain = false;
};

void WriteFile(const fs::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << bytes;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.native());
}

void WriteFolder(const fs::path& folder, const std::map<std::string, std::string>& files) {
  for (const auto& [path, text] : files) {
    const fs::path file = folder / path.substr(1);
    fs::create_directories(file.parent_path());
    WriteFile(file, text);
    if (path == kSecretKey) fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  }
}

void WriteArchive(const fs::path& file, const std::map<std::string, std::string>& files) {
  std::string archive;
  for (const auto& [path, text] : files) {
    archive += TarEntry("." + path, '0', path == kSecretKey ? 0600 : 0644, text);
  }
  WriteFile(file, archive + TarEnd());
}

int Run(const Request& request) {
  // What is there already would go in between the new devices.
  if (fs::exists(request.folder) && !fs::is_empty(request.folder)) {
    throw std::runtime_error(request.folder.native() + " is not empty");
  }
  fs::create_directories(request.folder);
  std::ofstream list(request.folder / kListName, std::ios::binary);
  for (std::size_t number = 1; number <= request.count; ++number) {
    fleets::SyntheticDevice device = fleets::MakeSyntheticDevice(request.seed, number, request.plain);
    if (request.as_archives) device.source.image += ".tar";
    const fs::path image = request.folder / device.source.image;
    if (request.as_archives) {
      WriteArchive(image, device.files);
    } else {
      WriteFolder(image, device.files);
    }
    list << fleets::ListLine(device.source) << '\n';
  }
  list.close();
  if (!list) throw std::runtime_error("cannot write " + (request.folder / kListName).native());
  std::cout << "Wrote " << request.count << " devices. Rehearse them: devicelab fleet @"
            << (request.folder / kListName).native() << " --from 8000 --output fleet.jsonl\n";
  return 0;
}

}  // namespace

void AddNew(CLI::App& app, Actions& actions) {
  CLI::App* const command =
      app.add_subcommand("new", "Write made-up devices of all kinds, and the list of them");
  const auto request = std::make_shared<Request>();
  command->add_option("FOLDER", request->folder, "The folder to write them to, empty or not yet there")
      ->required();
  command->add_option("--count", request->count, "How many devices")
      ->required()
      ->check(CLI::Range(1, 1'000'000));
  command->add_option("--seed", request->seed, "The same seed gives the same bytes, on any machine")
      ->required();
  command->add_flag("--archive", request->as_archives, "Write tar archives instead of folders");
  command->add_flag("--plain", request->plain, "Write ordinary households only");
  actions[command] = [request] { return StatusOf([&] { return Run(*request); }); };
}

}  // namespace lab::commands
