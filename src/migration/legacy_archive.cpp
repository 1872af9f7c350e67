#include "migration/legacy_archive.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "base/atomic_file.h"
#include "base/file_cache.h"
#include "legacy/format_text.h"
#include "migration/document_paths.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr const char* kArchive = "/usr/kelp/etc/wifi/legacy/";
constexpr mode_t kArchiveMode = 0755;

void MakeArchive() {
  std::filesystem::create_directories(kDocumentFolder);
  // Not left to create_directories: under an open umask everybody could write there.
  if (::mkdir(kArchive, kArchiveMode) == 0) return;
  const std::error_code error(errno, std::generic_category());
  if (error != std::errc::file_exists) {
    throw std::filesystem::filesystem_error("cannot create directories", kArchive, error);
  }
  std::filesystem::create_directories(kArchive);  // fails unless it is a folder
}

}  // namespace

void ArchiveLegacyFiles(const std::set<std::string>& files) {
  InvalidateFileCache();
  MakeArchive();
  // The one flush for all that was saved and made there: from the first move on a power cut must find every
  // document, and the archive with the files that it holds.
  FlushDirectory(kDocumentFolder);

  for (const std::string& file : files) {
    const std::string name = file.substr(file.rfind('/') + 1);
    std::filesystem::rename(file, FormatText("%s%s", kArchive, name.c_str()));
  }
}

}  // namespace KELP::Wifi::Updater
