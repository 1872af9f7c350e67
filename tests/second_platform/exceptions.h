#pragma once

#include <string>
#include <system_error>

namespace kelp::dbus {

class DbusError : public std::system_error {
 public:
  DbusError(const std::error_code& code, const std::string& text) : std::system_error(code, text) {}
};

}  // namespace kelp::dbus

namespace KELP::Wifi {

class ErrorCategory : public std::error_category {
 public:
  const char* name() const noexcept override;
  std::string message(int value) const override;
};

class WifiException : public kelp::dbus::DbusError {
 public:
  WifiException(int value, const std::string& text);
};

class RuntimeError : public WifiException {
 public:
  explicit RuntimeError(const char* format, ...);
};

}  // namespace KELP::Wifi
