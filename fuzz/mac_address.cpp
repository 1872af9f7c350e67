// The MAC address type. Input: the address's text.
#include "platform/mac_address.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"

namespace {

using KELP::Wifi::Util::MACAddress;

/// The text form of the address that `text` is; none where it is no address.
std::optional<std::string> PlainAddress(const std::string& text) {
  if (text.size() != 17) return std::nullopt;
  std::string form;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (i % 3 == 2) {
      if (byte != text[2] || (byte != ':' && byte != '-')) return std::nullopt;
      form += ':';
    } else if ((byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f')) {
      form += byte;
    } else if (byte >= 'A' && byte <= 'F') {
      form += static_cast<char>(byte - 'A' + 'a');
    } else {
      return std::nullopt;
    }
  }
  return form;
}

std::optional<MACAddress> Parse(const std::string& text) {
  try {
    return MACAddress(text);
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string text = input.TakeRest();

  const std::optional<MACAddress> address = Parse(text);
  const std::optional<std::string> expected = PlainAddress(text);
  FUZZ_CHECK(address.has_value() == expected.has_value());
  if (!address) return 0;
  FUZZ_CHECK(address->ToString() == *expected);
  FUZZ_CHECK(Parse(*expected) == address);
  FUZZ_CHECK((*address == MACAddress()) == (*expected == "00:00:00:00:00:00"));
  return 0;
}
