#pragma once

#include <json/value.h>

#include <string>

namespace KELP::Wifi::Util {

class JsonUtil {
 public:
  static Json::Value LoadJsonFromFile(const std::string& path);

  /// As "/var/second/saving" first, which is then moved. A line of "/var/second/journal" tells of each.
  static void SaveJsonToFile(const std::string& path, const Json::Value& document);

  static std::string GetString(const Json::Value& object, const std::string& name);
  static const Json::Value& GetArray(const Json::Value& object, const std::string& name);
};

}  // namespace KELP::Wifi::Util
