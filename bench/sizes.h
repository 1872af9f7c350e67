#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

/// The bytes of the program without its symbols. Throws std::runtime_error where they cannot be taken off.
std::int64_t StrippedSize(const std::filesystem::path& program);

/// The bytes of all these files together.
std::int64_t SizeOf(const std::vector<std::string>& files);

}  // namespace bench
