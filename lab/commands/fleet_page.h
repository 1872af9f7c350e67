#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lab::commands {

/// Writes the page of the records in the files, of a device the last one; lines that are no records are left
/// out, and so are records whose household is not JSON, which `complain` is called for. Throws
/// std::runtime_error where the page cannot be written whole; the file is as it was then.
void WriteFleetPage(const std::filesystem::path& html, const std::vector<std::filesystem::path>& files,
                    const std::function<void(const std::string&)>& complain);

}  // namespace lab::commands
