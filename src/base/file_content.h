#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string>

struct stat;

namespace KELP::Wifi {

/// What tells one version of a file from another without reading it.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::int64_t modified = 0;  // nanoseconds since the epoch
  std::int64_t changed = 0;   // nanoseconds since the epoch

  explicit FileStamp(const struct stat& status);
  bool operator==(const FileStamp&) const = default;

  /// False while a further change could still fall into the same tick of the file system's clock, so that an
  /// equal stamp later would prove nothing. Only to be asked before the file is read.
  bool IsSettled() const;
};

struct FileContent {
  std::string bytes;
  FileStamp stamp;
  bool settled;  // the stamp identifies exactly these bytes
};

inline constexpr std::size_t kNoSizeLimit = std::numeric_limits<std::size_t>::max();

/// Reads the regular file at `path` whole, links followed. The size that the file system reports is only a
/// hint: kernel entries report 0.
///
/// Throws std::system_error with the path and the cause when the file is missing, cannot be read, is anything
/// but a regular file (a FIFO is never waited for), or holds more than `size_limit` bytes (EFBIG).
FileContent ReadRegularFile(const std::string& path, std::size_t size_limit = kNoSizeLimit);

}  // namespace KELP::Wifi
