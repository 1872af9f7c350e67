#pragma once

#include <filesystem>
#include <vector>

namespace lab::commands {

/// Writes the page of the records in the files, of a device the last one; lines that are no records are left
/// out. Throws std::runtime_error where it cannot be written whole; the file is as it was then.
void WriteFleetPage(const std::filesystem::path& html, const std::vector<std::filesystem::path>& files);

}  // namespace lab::commands
