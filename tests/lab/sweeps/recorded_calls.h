#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/sweeps/strace_record.h"

/// The calls of a record that is written with plain strings: "write(4, 'text', 4) = 4", one a line, as strace
/// would write them in hexadecimal.
std::vector<lab::sweeps::SystemCall> Calls(const std::vector<std::string>& lines);

/// What strace makes of a string.
std::string Hexadecimal(std::string_view bytes);
