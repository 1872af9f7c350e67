#include "platform/mac_address.h"

#include <charconv>
#include <stdexcept>

namespace KELP::Wifi::Util {
namespace {

constexpr std::size_t kGroupWidth = 3;  // two digits and the separator behind them
constexpr int kHexadecimal = 16;

}  // namespace

MACAddress::MACAddress(std::string_view text) {
  const auto malformed = [&] { return std::invalid_argument("malformed MAC address: " + std::string(text)); };
  if (text.size() != bytes_.size() * kGroupWidth - 1) throw malformed();
  const char separator = text[2];
  if (separator != ':' && separator != '-') throw malformed();

  const char* group = text.data();
  for (std::size_t i = 0; i < bytes_.size(); ++i, group += kGroupWidth) {
    if (i > 0 && group[-1] != separator) throw malformed();
    const auto [end, error] = std::from_chars(group, group + 2, bytes_[i], kHexadecimal);
    if (error != std::errc() || end != group + 2) throw malformed();
  }
}

std::string MACAddress::ToString() const {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes_.size() * kGroupWidth);
  for (const std::uint8_t byte : bytes_) {
    if (!text.empty()) text += ':';
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

}  // namespace KELP::Wifi::Util
