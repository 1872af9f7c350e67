#pragma once

#include <cstdint>

namespace KELP::Wifi {

/// A run of the program, from its making to its end; one at a time. Nobody but the program itself is expected
/// to change the device's files meanwhile: what was read once in a run may be trusted for the rest of it, and
/// a file that was not there need not be looked for again. Outside a run nothing is trusted.
class FileCacheScope {
 public:
  FileCacheScope() noexcept;
  FileCacheScope(const FileCacheScope&) = delete;
  FileCacheScope& operator=(const FileCacheScope&) = delete;
  ~FileCacheScope();
};

/// The program is about to write, rename or remove a file: of what it has read nothing is trusted any more.
void InvalidateFileCache() noexcept;

/// The stretch of a run in which what is read now may be trusted: it is so for as long as this gives the same
/// number. No two stretches have the same. 0 outside a run.
std::uint64_t FileCacheEpoch() noexcept;

}  // namespace KELP::Wifi
