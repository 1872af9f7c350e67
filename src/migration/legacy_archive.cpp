#include "migration/legacy_archive.h"

#include <filesystem>

#include "base/durable_file.h"
#include "legacy/format_text.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr const char* kParent = "/usr/kelp/etc/wifi/";
constexpr const char* kArchive = "/usr/kelp/etc/wifi/legacy/";

}  // namespace

void ArchiveLegacyFiles(const std::set<std::string>& files) {
  // A file that reaches the disk in the archive must find the archive there after a power cut.
  if (std::filesystem::create_directories(kArchive)) FlushDirectory(kParent);

  for (const std::string& file : files) {
    const std::string name = file.substr(file.rfind('/') + 1);
    std::filesystem::rename(file, FormatText("%s%s", kArchive, name.c_str()));
  }
}

}  // namespace KELP::Wifi::Updater
