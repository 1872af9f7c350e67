#pragma once

#include <string>
#include <string_view>

namespace lab {

/// Whether the network's name `now` is not the whole of what is stored in base64: a name ends at a NUL in it.
bool IsNameCut(std::string_view stored, const std::string& now);

}  // namespace lab
