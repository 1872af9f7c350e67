#pragma once

#include <string_view>

namespace lab {

/// The text of one of this folder's files by its name, "page.css": the build puts them into the program.
/// Throws std::out_of_range for another name.
std::string_view PageText(std::string_view name);

}  // namespace lab
