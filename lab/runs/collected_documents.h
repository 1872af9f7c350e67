#pragma once

#include "lab/images/tree.h"

namespace lab {

/// Where the environment variable KELP_COLLECT_DOCUMENTS names a folder: puts a copy of every document that a
/// run made or changed, by what was in the device's folder of documents before and after, into it, as
/// "<hash of the content>.<name>". For holding documents of runs made for another end to their schemas; they
/// have the secrets of the devices in them. Does nothing where the variable is not set; throws
/// std::runtime_error when a copy cannot be made.
void CollectDocuments(const Tree& before, const Tree& after);

}  // namespace lab
