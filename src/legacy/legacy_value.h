#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace KELP::Wifi::Updater {

/// The value of `key` in the key=value file at `file` (absolute path), unchanged: an empty value is a value.
/// A copy of `default_value` when the file or the key is missing or cannot be read, which is the ordinary
/// case for optional settings: nothing is logged and nothing is ever thrown.
std::string ReadLegacyValue(const std::string& file, std::string_view key, std::string_view default_value);

/// The decimal number at the start of `text`: leading white space, an optional sign, digits; what follows the
/// digits is ignored. `default_value` when there are no digits or the number does not fit; nothing is logged.
std::int32_t ParseLegacyInt(const std::string& text, std::int32_t default_value);

/// True exactly for "yes": legacy flags are compared byte for byte.
inline bool IsYes(std::string_view value) {
  return value == "yes";
}

/// As IsYes, of the value that ReadLegacyValue gives for `key`; a missing one is false.
bool ReadLegacyFlag(const std::string& file, std::string_view key);

}  // namespace KELP::Wifi::Updater
