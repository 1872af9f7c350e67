#pragma once

#include <string>

#include "legacy/update_context.h"

namespace KELP::Wifi::Updater {

/// The handler of "--update-config": runs the migration that the old build number, as text, asks for. Gives
/// the exit status: 0, or 1 after it has reported a failure once to the system log and once to standard
/// error. Lets only exceptions through that are no std::exception.
int UpdateConfig(const std::string& build_number);

/// Runs the pipeline that the context's build number selects, or logs that there is nothing to do. Throws
/// what the pipeline throws.
void DispatchUpdate(const UpdateContext& context);

}  // namespace KELP::Wifi::Updater
