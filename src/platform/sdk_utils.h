#pragma once

#include <string>
#include <string_view>

namespace KELP::Wifi::Util::SDKUtils {

/// The value that the key=value file at `path` (absolute) holds under `key`: bytes, as they stand, but
/// without one pair of double quotes that encloses the whole value. Keys are compared whole; the first entry
/// of a key counts.
///
/// Every call answers for the file as it is at that moment. Within one run of the program it may answer for
/// what the file was, or that there was none, when the run first asked. Throws std::system_error when the
/// file is missing, unreadable or no regular file, std::runtime_error when it has no such key.
std::string FileGetKeyValue(const std::string& path, std::string_view key);

/// The value of `key` in the device's information store, the key=value file "/usr/kelp/etc/info.conf".
/// Throws as FileGetKeyValue.
std::string InfoGetKeyValue(std::string_view key);

}  // namespace KELP::Wifi::Util::SDKUtils
