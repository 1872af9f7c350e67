#pragma once

#include <string>
#include <string_view>

#include "legacy/update_context.h"
#include "platform/records/radio_frequency.h"

namespace KELP::Wifi::Updater {

/// The path of a radio's legacy access-point file, "/usr/kelp/etc/wifi/wifi_ap_" and the radio's BSSID; the
/// file of AllBands holds what is common to all radios. Throws as ReadInterfaceMAC does.
std::string GetAccessPointFilePath(const UpdateContext& context, Util::RadioFrequency frequency);

/// The address in the kernel entry "/proc/sys/kernel/kelp_mac_address<entry>" in colon notation, as
/// InsertPairColons makes it, without one newline at its end; no letter case is changed and nothing is
/// validated. The entry is read anew at every call. Throws std::runtime_error "Failed to get bssid from
/// kelp_mac_address" when it is missing or unreadable.
std::string ReadInterfaceMAC(int entry);

/// `text` (bytes, any number of lines) as `sed 's/..\B/&:/g'` prints it in the C locale: on each line a colon
/// behind every pair of bytes that does not end at the start or the end of a word, scanned from the left.
std::string InsertPairColons(std::string_view text);

}  // namespace KELP::Wifi::Updater
