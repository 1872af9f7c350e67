#include "tests/support/captured_streams.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace testing_support {
namespace {

int Checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

}  // namespace

CapturedStream::CapturedStream(int descriptor)
    : descriptor_(descriptor),
      original_(Checked(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3), "fcntl")),
      file_(Checked(::memfd_create("captured", MFD_CLOEXEC), "memfd_create")) {
  std::fflush(nullptr);  // what the test itself has printed goes where it belongs
  Checked(::dup2(file_, descriptor_), "dup2");
}

CapturedStream::~CapturedStream() {
  std::fflush(nullptr);
  ::dup2(original_, descriptor_);
  ::close(original_);
  ::close(file_);
}

std::string CapturedStream::Text() const {
  struct stat status {};
  Checked(::fstat(file_, &status), "fstat");
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  const auto taken = ::pread(file_, text.data(), text.size(), 0);
  text.resize(taken < 0 ? 0 : static_cast<std::size_t>(taken));
  return text;
}

}  // namespace testing_support
