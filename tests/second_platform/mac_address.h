#pragma once

#include <string>

namespace KELP::Wifi::Util {

/// There is none without a text. Throws RuntimeError for one that is not six pairs of digits; their letters
/// become capitals and what joins them is dropped.
class MACAddress {
 public:
  MACAddress(const char* text);  // NOLINT(google-explicit-constructor)

  const std::string& Digits() const { return digits_; }

 private:
  std::string digits_;
};

}  // namespace KELP::Wifi::Util
