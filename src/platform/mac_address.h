#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace KELP::Wifi::Util {

/// A 48-bit MAC address.
class MACAddress {
 public:
  /// 00:00:00:00:00:00.
  MACAddress() = default;

  /// Six groups of two hexadecimal digits of either letter case, joined by ':' throughout or by '-'
  /// throughout. Throws std::invalid_argument for anything else, the empty text too.
  explicit MACAddress(std::string_view text);

  /// Lower case, joined by ':'.
  std::string ToString() const;

  auto operator<=>(const MACAddress&) const = default;

 private:
  std::array<std::uint8_t, 6> bytes_{};
};

}  // namespace KELP::Wifi::Util
