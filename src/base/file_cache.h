#pragma once

#include <cstdint>

namespace KELP::Wifi {

/// While one of these exists, what was read from a file may be cached, and also that there is no such file:
/// the program expects nobody but itself to change files. One at a time. Outside of it nothing is cached.
class FileCacheScope {
 public:
  FileCacheScope() noexcept;
  FileCacheScope(const FileCacheScope&) = delete;
  FileCacheScope& operator=(const FileCacheScope&) = delete;
  ~FileCacheScope();
};

/// Invalidates everything cached from files. Call it before the program writes, renames or removes a file.
void InvalidateFileCache() noexcept;

inline constexpr std::uint64_t kNoFileCache = 0;

/// What was cached is valid for as long as this returns the same number, which never comes again after
/// another. kNoFileCache outside of a FileCacheScope.
std::uint64_t FileCacheEpoch() noexcept;

}  // namespace KELP::Wifi
