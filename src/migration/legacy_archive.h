#pragma once

#include <set>
#include <string>

namespace KELP::Wifi::Updater {

/// Moves each file of `files` (absolute paths), in byte order, into "/usr/kelp/etc/wifi/legacy/", which is
/// created with its parents where it is missing, with mode 0755 at most. A file of the same name there is
/// replaced. Before the first move "/usr/kelp/etc/wifi/" is flushed: the archive and all documents that were
/// saved there are durable then. The moves themselves are not flushed.
///
/// Throws std::filesystem::filesystem_error when the archive cannot be made, std::system_error when the flush
/// fails, nothing being moved in both cases; and std::filesystem::filesystem_error at the first file that
/// cannot be moved, a missing one among them: those before it are archived then, those after it stay where
/// they are.
void ArchiveLegacyFiles(const std::set<std::string>& files);

}  // namespace KELP::Wifi::Updater
