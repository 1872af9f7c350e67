#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "bench/contestant.h"

namespace bench {

/// Whether instructions can be counted here: valgrind is there.
bool CanCountInstructions();

/// The instructions of one run in user mode, loader and child processes included, as callgrind counts them;
/// nothing where valgrind is missing.
std::optional<std::int64_t> CountInstructions(const std::filesystem::path& image,
                                              const Contestant& contestant);
std::optional<std::int64_t> CountInstructions(lab::PrivateRoot& root, const Contestant& contestant);

}  // namespace bench
