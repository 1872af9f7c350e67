#include <array>
#include <cstdarg>
#include <cstdio>

#include "platform/exceptions.h"

namespace KELP::Wifi {
namespace {

const ErrorCategory category;

std::string Format(const char* format, std::va_list arguments) {
  std::array<char, 512> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  return text.data();
}

}  // namespace

const char* ErrorCategory::name() const noexcept {
  return "second";
}

std::string ErrorCategory::message(int value) const {
  return "second platform, error " + std::to_string(value);
}

WifiException::WifiException(int value, const std::string& text) : DbusError({value, category}, text) {}

// The list of arguments begins in the body only.
RuntimeError::RuntimeError(const char* format, ...) : WifiException(2, "") {
  std::va_list arguments;
  va_start(arguments, format);
  static_cast<std::system_error&>(*this) = std::system_error({2, category}, Format(format, arguments));
  va_end(arguments);
}

}  // namespace KELP::Wifi
