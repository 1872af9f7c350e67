#include "lab/images/descriptor.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace lab {

void Descriptor::Close() noexcept {
  if (IsOpen()) ::close(std::exchange(number_, -1));
}

void ThrowErrno(std::string_view action, std::string_view path) {
  const int cause = errno;
  std::string what(action);
  if (!path.empty()) what.append(" ").append(path);
  throw std::system_error(cause, std::generic_category(), what);
}

}  // namespace lab
