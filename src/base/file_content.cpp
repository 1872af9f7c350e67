#include "base/file_content.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "base/unique_fd.h"

namespace KELP::Wifi {
namespace {

// With narrower ones a file dated behind 2038, or with a large inode number, could not even be looked at.
static_assert(sizeof(off_t) == 8 && sizeof(ino_t) == 8 && sizeof(time_t) == 8,
              "compile with -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64");

constexpr std::size_t kSmallestRead = 512;
constexpr std::size_t kLargestFirstReservation = 64UL * 1024 * 1024;

[[noreturn]] void ThrowUnreadable(const std::string& path, int error) {
  throw std::system_error(error, std::generic_category(), "cannot read " + path);
}

}  // namespace

std::string ReadRegularFile(const std::string& path, std::size_t size_limit) {
  const UniqueFd file(
      RetryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
  if (!file.IsOpen()) ThrowUnreadable(path, errno);

  struct stat status {};
  if (::fstat(file.Get(), &status) != 0) ThrowUnreadable(path, errno);
  if (S_ISDIR(status.st_mode)) ThrowUnreadable(path, EISDIR);
  if (!S_ISREG(status.st_mode)) ThrowUnreadable(path, EINVAL);

  const auto expected = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
  if (expected > size_limit) ThrowUnreadable(path, EFBIG);  // before it costs any memory
  std::string bytes;
  // One byte more than expected lets the read that finds the end go without growing the buffer.
  bytes.resize(std::clamp(expected + 1, kSmallestRead, kLargestFirstReservation));
  std::size_t filled = 0;
  while (true) {
    if (filled == bytes.size()) bytes.resize(bytes.size() * 2);
    const ssize_t got =
        RetryInterrupted([&] { return ::read(file.Get(), &bytes[filled], bytes.size() - filled); });
    if (got < 0) ThrowUnreadable(path, errno);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
    if (filled > size_limit) ThrowUnreadable(path, EFBIG);
  }
  bytes.resize(filled);
  return bytes;
}

}  // namespace KELP::Wifi
