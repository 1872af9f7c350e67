#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace lab::sweeps {

/// Does `count` pieces of work in `workers` processes at a time and gives the text that each piece returned,
/// in order. Throws std::runtime_error when a worker ended before its work was done; what a piece of work
/// throws is printed.
std::vector<std::string> DoInWorkers(std::size_t count, unsigned workers,
                                     const std::function<std::string(std::size_t)>& work);

}  // namespace lab::sweeps
