#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <system_error>
#include <utility>
#include <variant>

#include "base/file_cache.h"
#include "base/file_content.h"

namespace KELP::Wifi {

/// Parsed files. Within a FileCacheScope each is read once, until the program says that it changes files:
/// then all are forgotten. Outside of one a file is read at every call.
///
/// `Parsed` is made in place from a file's bytes (std::string) and never copied or moved.
template <typename Parsed>
class ParsedFileCache {
 public:
  /// The file at `path`, valid until the next call. Throws as ReadRegularFile does, and what the constructor
  /// of `Parsed` throws; of such a file nothing is kept but that there is none.
  const Parsed& Get(const std::string& path) {
    const std::uint64_t epoch = FileCacheEpoch();
    if (epoch == kNoFileCache || epoch != epoch_) files_.clear();
    epoch_ = epoch;
    auto file = files_.find(path);
    if (file == files_.end()) file = Read(path);
    if (const auto* missing = std::get_if<std::system_error>(&file->second)) throw *missing;
    return std::get<Parsed>(file->second);
  }

 private:
  using Files = std::map<std::string, std::variant<Parsed, std::system_error>>;

  typename Files::iterator Read(const std::string& path) {
    try {
      return files_.try_emplace(path, std::in_place_type<Parsed>, ReadRegularFile(path)).first;
    } catch (const std::system_error& error) {
      if (error.code() != std::errc::no_such_file_or_directory) throw;
      return files_.try_emplace(path, error).first;
    }
  }

  Files files_;
  std::uint64_t epoch_ = kNoFileCache;  // in which the files were read
};

}  // namespace KELP::Wifi
