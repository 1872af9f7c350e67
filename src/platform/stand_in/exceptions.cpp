#include "platform/exceptions.h"

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

}  // namespace KELP::Wifi
