#pragma once

#include <random>

#include "lab/images/private_root.h"

namespace end_to_end {

/// Gives the legacy files of a sample device other settings at random, the same ones for the same state of
/// the engine: known words, words of other keys, numbers about the ends of their range, texts and secrets in
/// any bytes, keys that are gone. The device can be migrated as before.
void Vary(lab::PrivateRoot& device, std::mt19937& engine);

}  // namespace end_to_end
