#pragma once

#include <cstddef>
#include <limits>
#include <string>

namespace KELP::Wifi {

inline constexpr std::size_t kNoSizeLimit = std::numeric_limits<std::size_t>::max();

/// The bytes of the regular file at `path`, links followed. The size that the file system reports is only a
/// hint: kernel entries report 0.
///
/// Throws std::system_error with the path and the cause when the file is missing, cannot be read, is anything
/// but a regular file (a FIFO is never waited for), or holds more than `size_limit` bytes (EFBIG).
std::string ReadRegularFile(const std::string& path, std::size_t size_limit = kNoSizeLimit);

}  // namespace KELP::Wifi
