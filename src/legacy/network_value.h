#pragma once

#include <string>
#include <string_view>

namespace KELP::Wifi::Updater {

/// One network's values in a legacy access-point file, which holds those of the primary and of the guest
/// network.
struct NetworkSource {
  std::string file;  // absolute path
  bool isGuest = false;
};

/// The name under which a network's `key` stands: "guest_" and the key for the guest network, except for
/// "pmf_mode", which the guest network takes from the primary one.
std::string GuestKey(std::string_view key, bool is_guest);

/// The network's value of `key`, unchanged; empty when it is missing.
std::string ReadNetworkValue(const NetworkSource& source, std::string_view key);

}  // namespace KELP::Wifi::Updater
