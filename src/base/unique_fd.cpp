#include "base/unique_fd.h"

#include <unistd.h>

namespace KELP::Wifi {

bool UniqueFd::Close() noexcept {
  if (!IsOpen()) return true;
  // Linux releases the descriptor even when close is interrupted: to call it again could close somebody
  // else's.
  return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR;
}

bool WriteAll(int descriptor, const char* data, std::size_t size) noexcept {
  while (size > 0) {
    const ssize_t written = RetryInterrupted([&] { return ::write(descriptor, data, size); });
    if (written < 0) return false;
    if (written == 0) {  // for ever, most likely
      errno = ENOSPC;
      return false;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

}  // namespace KELP::Wifi
