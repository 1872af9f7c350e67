#pragma once

#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

// What an earlier run left makes no difference: both throw std::runtime_error when the program does not come
// to the same end with it as without it.

/// The device with documents of an earlier time wherever its run is going to write one and would not stop for
/// it.
Device WithOldDocuments(const Device& device, const Programs& programs);

/// The device with what an interrupted run could leave beside each document that its run is going to write,
/// and, of generation 1.2.5, an archive that holds an older file already.
Device WithLeftovers(const Device& device, const Programs& programs);

}  // namespace lab::sweeps
