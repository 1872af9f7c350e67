#pragma once

#include <sys/stat.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/file_content.h"

namespace KELP::Wifi {

/// Parsed files, read once each for as long as they do not change.
///
/// `Parsed` is made in place from a file's bytes (std::string) and never copied or moved. Whoever asks for
/// the same file again pays one stat: it is read anew when device, inode, size or one of its time stamps
/// differ, and also when it had changed so shortly before it was read that its time stamps could not tell a
/// further change.
template <typename Parsed>
class RememberedFiles {
 public:
  /// The file at `path` as it is now; valid until the next call for the same path.
  /// Throws as ReadRegularFile does, and what the constructor of `Parsed` throws; nothing is remembered then.
  const Parsed& Get(const std::string& path) {
    // Most calls ask for the file that the call before asked for.
    if (latest_ == files_.end() || latest_->first != path) latest_ = files_.find(path);
    if (latest_ != files_.end()) {
      const Remembered& remembered = latest_->second;
      if (remembered.stamp && remembered.stamp == CurrentStamp(path)) return remembered.parsed;
      files_.erase(std::exchange(latest_, files_.end()));
    }
    FileContent content = ReadRegularFile(path);
    const auto stamp = content.settled ? std::optional(content.stamp) : std::nullopt;
    latest_ = files_.try_emplace(path, stamp, std::move(content.bytes)).first;
    return latest_->second.parsed;
  }

 private:
  struct Remembered {
    Remembered(std::optional<FileStamp> stamp_of_bytes, std::string bytes)
        : stamp(stamp_of_bytes), parsed(std::move(bytes)) {}

    std::optional<FileStamp> stamp;  // none: the bytes cannot be told from later ones
    Parsed parsed;
  };

  static std::optional<FileStamp> CurrentStamp(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileStamp(status);
  }

  std::map<std::string, Remembered> files_;
  typename std::map<std::string, Remembered>::iterator latest_ = files_.end();
};

}  // namespace KELP::Wifi
