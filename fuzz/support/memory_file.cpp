#include "fuzz/support/memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/support/check.h"

namespace fuzz {

MemoryFile::MemoryFile()
    : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  FUZZ_CHECK(descriptor_ >= 0);
}

MemoryFile::~MemoryFile() {
  ::close(descriptor_);
}

void MemoryFile::Write(std::string_view bytes) {
  FUZZ_CHECK(::ftruncate(descriptor_, 0) == 0);
  FUZZ_CHECK(::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
}

}  // namespace fuzz
