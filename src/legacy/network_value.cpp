#include "legacy/network_value.h"
#include <string>
#include <string_view>

#include "legacy/legacy_value.h"

namespace KELP::Wifi::Updater {

std::string GuestKey(std::string_view key, bool is_guest) {
  const bool is_prefixed = is_guest && key != "pmf_mode";
  return std::string(is_prefixed ? "guest_" : "").append(key);
}

std::string ReadNetworkValue(const NetworkSource& source, std::string_view key) {
  if (!source.isGuest) return ReadLegacyValue(source.file, key, "");
  return ReadLegacyValue(source.file, GuestKey(key, true), "");
}

}  // namespace KELP::Wifi::Updater
