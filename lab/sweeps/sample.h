#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lab::sweeps {

/// The places of `count` of the things whose kinds these are, one of every kind among them, drawn with `seed`
/// and in order; of all when there are no more.
std::vector<std::size_t> DrawSample(const std::vector<std::string>& kinds, std::size_t count,
                                    std::uint64_t seed);

}  // namespace lab::sweeps
