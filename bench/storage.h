#pragma once

#include <filesystem>
#include <optional>

namespace bench {

/// Where the devices' files lie for as long as the object lives: flushing costs nothing in memory, and on a
/// disk mostly what its file system and its driver make of it.
class Storage {
 public:
  explicit Storage(const std::filesystem::path& folder);
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;
  ~Storage();

 private:
  std::optional<std::filesystem::path> former_;
};

/// A folder whose files are in memory, and one whose files are not; none where there is none for this user.
std::optional<std::filesystem::path> FolderInMemory();
std::optional<std::filesystem::path> FolderOnDisk();

}  // namespace bench
