#pragma once

#include <string>

namespace KELP::Wifi::Util {

/// What a file does not tell is thrown as a number, which is no standard exception.
class SDKUtils {
 public:
  static std::string FileGetKeyValue(const std::string& file, const std::string& key);

  /// From "/var/second/facts": lines of a key, " -> " and a value. Throws RuntimeError.
  static std::string InfoGetKeyValue(const std::string& key);
};

}  // namespace KELP::Wifi::Util
