#pragma once

#include <json/value.h>

namespace KELP::Wifi::Util {

/// A record becomes one line of text.
class JsonSerializer {
 public:
  template <typename Record>
  static Json::Value Serialize(const Record& record);
};

}  // namespace KELP::Wifi::Util
