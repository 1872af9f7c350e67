#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/records/mac_filter.h"

namespace KELP::Wifi::Updater {

/// The enabled devices of the legacy section file at `path`, one section a device, in file order, duplicates
/// too. Empty, with a log line, when there is no list or table to be had or the file cannot be enumerated.
/// Throws what MACAddress throws for a malformed address, and std::bad_alloc when memory runs out later.
std::vector<MACFilterDevice> ReadMACFilterDevices(const std::string& path);

/// The profiles that the legacy deny and allow lists make for the primary network and, unless its policy is
/// "disabled", for the guest network; ids count up from 0 in list order. All or nothing: one malformed
/// address, or memory that runs out, empties the list, silently. Never throws.
std::vector<MACFilterProfile> BuildMACFilterProfiles();

/// The id of the profile that the network's legacy policy selects, or -1 when it has none.
std::int32_t FindMACFilterProfileId(const std::vector<MACFilterProfile>& profiles, bool is_guest);

}  // namespace KELP::Wifi::Updater
