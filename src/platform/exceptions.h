#pragma once

#include <string>
#include <system_error>

namespace kelp::dbus {

/// Root of the platform's own exceptions.
class DbusError : public std::system_error {
 public:
  using std::system_error::system_error;
};

}  // namespace kelp::dbus

namespace KELP::Wifi {

/// The platform's error category: name "kelp"; value 2 reads "runtime error".
class ErrorCategory : public std::error_category {
 public:
  static constexpr int kRuntimeError = 2;

  const char* name() const noexcept override;
  std::string message(int value) const override;

  /// The one category object that every error code of the platform refers to.
  static const ErrorCategory& Instance() noexcept;
};

class WifiException : public kelp::dbus::DbusError {
 public:
  using DbusError::DbusError;
};

/// A failure that ends a migration. Its what() is the message, ": " and "runtime error".
class RuntimeError : public WifiException {
 public:
  /// `message` is taken as it stands and never formatted.
  explicit RuntimeError(const std::string& message);

  /// The message is what printf makes of `format` and at least one argument; "Error during formatting." where
  /// the C library cannot.
  template <typename First, typename... Rest>
  RuntimeError(const char* format, First first, Rest... rest)
      : RuntimeError(Formatted(format, first, rest...)) {}

 private:
  [[gnu::format(printf, 1, 2)]] static std::string Formatted(const char* format, ...);
};

}  // namespace KELP::Wifi
