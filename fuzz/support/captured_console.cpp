#include "fuzz/support/captured_console.h"

#include <unistd.h>

namespace {

std::string* captured = nullptr;

}  // namespace

extern "C" ssize_t __real_write(int descriptor, const void* data, std::size_t size);

// The linker puts this in the place of the C library's (--wrap).
extern "C" ssize_t __wrap_write(int descriptor, const void* data, std::size_t size) {
  if (descriptor != STDERR_FILENO || captured == nullptr) return __real_write(descriptor, data, size);
  captured->append(static_cast<const char*>(data), size);
  return static_cast<ssize_t>(size);
}

namespace fuzz {

CapturedStandardError::CapturedStandardError() {
  captured = &text_;
}

CapturedStandardError::~CapturedStandardError() {
  captured = nullptr;
}

}  // namespace fuzz
