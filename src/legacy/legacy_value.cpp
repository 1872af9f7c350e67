#include "legacy/legacy_value.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "platform/sdk_utils.h"

namespace KELP::Wifi::Updater {

std::string ReadLegacyValue(const std::string& file, std::string_view key, std::string_view default_value) {
  try {
    return Util::SDKUtils::FileGetKeyValue(file, std::string(key));
  } catch (...) {
    return std::string(default_value);
  }
}

std::int32_t ParseLegacyInt(const std::string& text, std::int32_t default_value) {
  constexpr int kDecimal = 10;
  errno = 0;
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, kDecimal);
  const bool fits = errno != ERANGE && number >= std::numeric_limits<std::int32_t>::min() &&
                    number <= std::numeric_limits<std::int32_t>::max();
  return end != text.c_str() && fits ? static_cast<std::int32_t>(number) : default_value;
}

bool ReadLegacyFlag(const std::string& file, std::string_view key) {
  return IsYes(ReadLegacyValue(file, key, ""));
}

}  // namespace KELP::Wifi::Updater
