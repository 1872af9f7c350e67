#pragma once

#include "legacy/update_context.h"

namespace KELP::Wifi::Updater {

/// Merges the four 1.3-era files ("model.json", "country.json", "backhaul.json" beside the documents and the
/// mesh role file) into "global.json" and removes the model and the country file.
///
/// Throws std::runtime_error when one of the first three is missing, RuntimeError for a model or country that
/// has no such name, what JsonUtil throws for a malformed file, and std::system_error for a document that
/// cannot be saved or flushed, and std::filesystem::filesystem_error for a failed removal. Before the
/// document is written nothing is changed, and nothing is removed before it is durable.
void Migrate13GlobalFiles(const UpdateContext& context);

}  // namespace KELP::Wifi::Updater
