#include "platform/exceptions.h"

#include <cstdarg>

#include "base/format_text.h"

namespace KELP::Wifi {

const char* ErrorCategory::name() const noexcept {
  return "kelp";
}

std::string ErrorCategory::message(int value) const {
  return value == kRuntimeError ? "runtime error" : "unknown error";
}

const ErrorCategory& ErrorCategory::Instance() noexcept {
  static const ErrorCategory category;
  return category;
}

RuntimeError::RuntimeError(const std::string& message)
    : WifiException(ErrorCategory::kRuntimeError, ErrorCategory::Instance(), message) {}

std::string RuntimeError::Formatted(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  struct End {
    std::va_list& list;
    ~End() { va_end(list); }
  } end{arguments};
  return TryFormatTextV(format, arguments).value_or("Error during formatting.");
}

}  // namespace KELP::Wifi
