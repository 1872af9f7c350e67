#pragma once

#include <cstddef>
#include <string>

namespace lab::fleets {

/// "1 device", "2 devices".
std::string Counted(std::size_t number, const std::string& thing);

}  // namespace lab::fleets
