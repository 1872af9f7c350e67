#include "tests/support/failing_format.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>

namespace {

thread_local std::string_view failing_start;

bool Fails(const char* format) {
  if (failing_start.empty() || !std::string_view(format).starts_with(failing_start)) return false;
  errno = EILSEQ;
  return true;
}

}  // namespace

namespace testing_support {

FailingFormat::FailingFormat(std::string_view start) {
  failing_start = start;
}

FailingFormat::~FailingFormat() {
  failing_start = {};
}

}  // namespace testing_support

extern "C" {

int __real_vsnprintf(char* buffer, std::size_t size, const char* format, std::va_list arguments);
int __wrap_vsnprintf(char* buffer, std::size_t size, const char* format, std::va_list arguments);
int __wrap_vsnprintf(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  return Fails(format) ? -1 : __real_vsnprintf(buffer, size, format, arguments);
}

// What calls become that are compiled with _FORTIFY_SOURCE.
int __real___vsnprintf_chk(char* buffer, std::size_t size, int flag, std::size_t room, const char* format,
                           std::va_list arguments);
int __wrap___vsnprintf_chk(char* buffer, std::size_t size, int flag, std::size_t room, const char* format,
                           std::va_list arguments);
int __wrap___vsnprintf_chk(char* buffer, std::size_t size, int flag, std::size_t room, const char* format,
                           std::va_list arguments) {
  return Fails(format) ? -1 : __real___vsnprintf_chk(buffer, size, flag, room, format, arguments);
}

}  // extern "C"
