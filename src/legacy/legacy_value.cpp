#include "legacy/legacy_value.h"

#include <stdexcept>

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
  try {
    return std::stoi(text);
  } catch (const std::logic_error&) {  // no digits, or out of range
    return default_value;
  }
}

bool ReadLegacyFlag(const std::string& file, std::string_view key) {
  return IsYes(ReadLegacyValue(file, key, ""));
}

}  // namespace KELP::Wifi::Updater
