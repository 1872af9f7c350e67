#pragma once

#include <filesystem>
#include <string_view>

namespace lab::page {

/// Requires that a page can be written to `file`: a folder that may be written to, and no folder, device or
/// pipe of that name. To be asked before the work that fills the page. Throws std::runtime_error, saying why
/// not.
void RequirePageFile(const std::filesystem::path& file);

/// Writes the file, all or nothing: it holds the whole page, or what it held before. Mode 0600, since a page
/// is about households. Throws std::runtime_error with the file and the cause.
void WritePageFile(const std::filesystem::path& file, std::string_view html);

}  // namespace lab::page
