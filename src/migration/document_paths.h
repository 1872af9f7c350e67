#pragma once

namespace KELP::Wifi::Updater {

/// The documents that the daemon reads, and their folder.
inline constexpr const char* kDocumentFolder = "/usr/kelp/etc/wifi/";
inline constexpr const char* kGlobalDocument = "/usr/kelp/etc/wifi/global.json";
inline constexpr const char* kMiscDocument = "/usr/kelp/etc/wifi/misc.json";
inline constexpr const char* kRadioDocument = "/usr/kelp/etc/wifi/radio.json";
inline constexpr const char* kWPSDocument = "/usr/kelp/etc/wifi/wps.json";
inline constexpr const char* kNetworkDocumentPrefix =
    "/usr/kelp/etc/wifi/network.json.";  // then the topology

}  // namespace KELP::Wifi::Updater
