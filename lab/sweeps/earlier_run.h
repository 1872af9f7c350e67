#pragma once

#include "lab/sweeps/migration_run.h"

namespace lab::sweeps {

/// The device with documents of an earlier time wherever its run is going to write one and would not stop for
/// it.
Device WithOldDocuments(const Device& device, const Programs& programs);

/// The device with what an interrupted run could leave beside each document that its run is going to write.
Device WithLeftovers(const Device& device, const Programs& programs);

}  // namespace lab::sweeps
