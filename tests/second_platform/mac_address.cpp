#include "platform/mac_address.h"

#include <cctype>

#include "platform/exceptions.h"

namespace KELP::Wifi::Util {

MACAddress::MACAddress(const char* text) {
  for (const char* place = text; *place != '\0'; ++place) {
    const auto byte = static_cast<unsigned char>(*place);
    if (std::isxdigit(byte) != 0) digits_ += static_cast<char>(std::toupper(byte));
  }
  if (digits_.size() != 12) throw RuntimeError("no station: %s", text);
}

}  // namespace KELP::Wifi::Util
