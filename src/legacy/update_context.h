#pragma once

#include <cstdint>

#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {

/// The device's place in a mesh.
enum class MeshRole : std::int32_t {
  Standalone = 0,  // no repeater, and no repeater nodes are registered
  MeshRouter = 1,  // no repeater, and at least one repeater node is registered
  Repeater = 2,
};

/// What is known of the device before a pipeline is chosen; made once in a run.
struct UpdateContext {
  std::int32_t buildNumber = 0;  // of the firmware that was installed before
  MeshRole meshRole = MeshRole::Standalone;
  Util::SupportedModel model = Util::SupportedModel::Error;
};

}  // namespace KELP::Wifi::Updater
