#include <fstream>
#include <optional>

#include "platform/exceptions.h"
#include "platform/sdk_utils.h"
#include "platform/wifi_utils.h"

namespace KELP::Wifi::Util {
namespace {

std::optional<std::string> Find(const std::string& file, const std::string& start) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(start)) return line.substr(start.size());
  }
  return std::nullopt;
}

}  // namespace

std::string SDKUtils::FileGetKeyValue(const std::string& file, const std::string& key) {
  const auto value = Find(file, key + '=');
  if (!value) throw 404;
  return *value;
}

std::string SDKUtils::InfoGetKeyValue(const std::string& key) {
  const auto value = Find("/var/second/facts", key + " -> ");
  if (!value) throw RuntimeError("nobody knows %s", key.c_str());
  return *value;
}

std::string WifiUtils::GetDefaultWPS_AP_PIN() {
  return "00000042";
}

}  // namespace KELP::Wifi::Util
