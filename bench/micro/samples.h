#pragma once

#include <cstddef>
#include <string>

#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"

namespace bench {

/// A radio's access-point file of `keys` entries: "key_0=value 0" and so on.
std::string KeyValueFile(std::size_t keys);

/// A filter list of that many stations, in sections "station_0" and so on.
std::string FilterList(std::size_t stations);

/// A network on four radios.
KELP::Wifi::NetworkSetting Network();

/// Filter profiles of that many stations.
KELP::Wifi::Daemon::MiscSetting Filters(std::size_t stations);

}  // namespace bench
