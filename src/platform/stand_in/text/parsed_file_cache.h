#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "base/file_cache.h"
#include "base/file_content.h"

namespace KELP::Wifi {

/// Parsed files, read once each for as long as they do not change.
///
/// `Parsed` is made in place from a file's bytes (std::string) and never copied or moved. Within a run a file
/// that was read is trusted, and so is that there was none, until the program changes files itself. Otherwise
/// whoever asks for the same file again pays one stat: it is read anew when device, inode, size or one of its
/// time stamps differ, and also when it had changed so shortly before it was read that its time stamps could
/// not tell a further change.
template <typename Parsed>
class ParsedFileCache {
 public:
  /// The file at `path` as it is now, or was when the run first asked for it; valid until the next call for
  /// the same path. Throws as ReadRegularFile does, and what the constructor of `Parsed` throws; of such a
  /// file nothing is remembered but, for the run, that there is none.
  const Parsed& Get(const std::string& path) {
    // Most calls ask for the file that the call before asked for.
    if (latest_ == files_.end() || latest_->first != path) latest_ = files_.find(path);
    if (latest_ == files_.end() || !IsStillTrue(path, latest_->second)) Read(path);
    const Remembered& remembered = latest_->second;
    if (remembered.missing) throw std::system_error(*remembered.missing);
    return *remembered.parsed;
  }

 private:
  struct Remembered {
    explicit Remembered(FileContent content)
        : stamp(content.settled ? std::optional(content.stamp) : std::nullopt),
          parsed(std::in_place, std::move(content.bytes)) {}
    explicit Remembered(const std::system_error& error) : missing(error) {}

    std::uint64_t stretch = FileCacheEpoch();  // in which it was last known to be so
    std::optional<FileStamp> stamp;            // none: the bytes cannot be told from later ones
    std::optional<Parsed> parsed;
    std::optional<std::system_error> missing;  // instead of the others
  };

  static bool IsStillTrue(const std::string& path, Remembered& remembered) {
    const std::uint64_t stretch = FileCacheEpoch();
    if (stretch != 0 && remembered.stretch == stretch) return true;
    if (!remembered.stamp || remembered.stamp != CurrentStamp(path)) return false;
    remembered.stretch = stretch;
    return true;
  }

  static std::optional<FileStamp> CurrentStamp(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileStamp(status);
  }

  void Read(const std::string& path) {
    if (latest_ != files_.end()) files_.erase(std::exchange(latest_, files_.end()));
    try {
      latest_ = files_.try_emplace(path, ReadRegularFile(path)).first;
    } catch (const std::system_error& error) {
      if (error.code() != std::errc::no_such_file_or_directory) throw;
      latest_ = files_.try_emplace(path, error).first;
    }
  }

  std::map<std::string, Remembered> files_;
  typename std::map<std::string, Remembered>::iterator latest_ = files_.end();
};

}  // namespace KELP::Wifi
