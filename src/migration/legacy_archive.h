#pragma once

#include <set>
#include <string>

namespace KELP::Wifi::Updater {

/// Moves each file of `files` (absolute paths), in byte order, into "/usr/kelp/etc/wifi/legacy/", which is
/// created with its parents where it is missing. A file of the same name there is replaced.
///
/// Throws std::filesystem::filesystem_error at the first one that cannot be moved, a missing one among them:
/// those before it are archived then, those after it stay where they are.
void ArchiveLegacyFiles(const std::set<std::string>& files);

}  // namespace KELP::Wifi::Updater
