#pragma once

#include <string>

#include "legacy/update_context.h"

namespace KELP::Wifi::Updater {

/// From the information store's "mesh_network_role" ("re" makes a repeater) and the array "repeater_nodes" of
/// "/usr/kelp/etc/mesh/mesh.conf". Whatever cannot be read is logged and gives Standalone; never throws
/// a standard exception.
MeshRole GetMeshRole();

/// From the information store's "kelpbios". Throws std::runtime_error for a value that names no model, and
/// what the information store throws.
Util::SupportedModel GetSupportedModel();

/// "default", "bridge" or "repeater": how the network is wired. "repeater" follows from the mesh role alone,
/// the others from the information store's "net_topology"; what is unreadable or unsupported there is logged
/// and gives "default".
std::string GetNetTopology(const UpdateContext& context);

/// False when the boot environment switches USB 3 off. True when it cannot be asked, with a log line.
bool IsUSB3Enabled();

}  // namespace KELP::Wifi::Updater
