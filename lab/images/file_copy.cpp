#include "lab/images/file_copy.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <memory>

namespace lab {
namespace {

constexpr mode_t kModeBits = 07777;

std::string Below(const std::string& path, const std::string& name) {
  return path + "/" + name;
}

struct stat StatusAt(int directory, const std::string& name, const std::string& path) {
  struct stat status {};
  Checked(::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW), "examine", path);
  return status;
}

void CopyFile(int from, int to, const std::string& name, mode_t mode, const std::string& path) {
  const Descriptor source = OpenAt(from, name, O_RDONLY, path);
  const Descriptor copy(Checked(
      ::openat(to, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600), "copy", path));
  WriteAll(copy.Get(), ReadAll(source.Get(), path), path);
  Checked(::fchmod(copy.Get(), mode), "copy", path);
}

void CopyDirectory(int from, int to, const std::string& name, mode_t mode, const std::string& path) {
  Checked(::mkdirat(to, name.c_str(), 0700), "copy", path);
  const Descriptor source = OpenAt(from, name, O_RDONLY | O_DIRECTORY, path);
  const Descriptor copy = OpenAt(to, name, O_RDONLY | O_DIRECTORY, path);
  CopyEntries(source.Get(), copy.Get(), path);
  Checked(::fchmod(copy.Get(), mode), "copy", path);
}

void CopyFifo(int to, const std::string& name, mode_t mode, const std::string& path) {
  Checked(::mkfifoat(to, name.c_str(), 0600), "copy", path);
  Checked(::fchmodat(to, name.c_str(), mode, 0), "copy", path);
}

struct CloseStream {
  void operator()(DIR* stream) const { ::closedir(stream); }
};

Descriptor OpenUnmountedDirectory(int directory, const std::string& name, const std::string& path) {
  open_how how{};
  how.flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  how.resolve = RESOLVE_NO_XDEV;
  return Descriptor(static_cast<int>(
      Checked(::syscall(SYS_openat2, directory, name.c_str(), &how, sizeof how), "remove", path)));
}

}  // namespace

Descriptor OpenAt(int directory, const std::string& name, int flags, const std::string& path) {
  return Descriptor(
      Checked(::openat(directory, name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC), "open", path));
}

Descriptor OpenBelow(int root, const std::string& device_path, int flags, mode_t mode) {
  open_how how{};
  how.flags = static_cast<unsigned>(flags | O_CLOEXEC);
  how.mode = mode;
  how.resolve = RESOLVE_IN_ROOT;
  long descriptor = -1;
  do {
    descriptor = ::syscall(SYS_openat2, root, device_path.c_str(), &how, sizeof how);
  } while (descriptor < 0 && (errno == EAGAIN || errno == EINTR));  // a rename elsewhere came in between
  return Descriptor(static_cast<int>(descriptor));
}

std::vector<std::string> Names(int directory, const std::string& path, std::size_t most) {
  // Its own description: the caller's may be O_PATH, and would share its position.
  Descriptor own = OpenAt(directory, ".", O_RDONLY | O_DIRECTORY, path);
  const std::unique_ptr<DIR, CloseStream> stream(::fdopendir(own.Get()));
  if (!stream) ThrowErrno("list", path);
  own.Release();

  std::vector<std::string> names;
  errno = 0;
  while (names.size() < most) {
    const dirent* const entry = ::readdir(stream.get());
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
    errno = 0;
  }
  if (errno != 0) ThrowErrno("list", path);
  return names;
}

std::string LinkTarget(int directory, const std::string& name, const std::string& path) {
  std::array<char, PATH_MAX> target;  // NOLINT(cppcoreguidelines-pro-type-member-init): readlinkat() fills it
  const ssize_t length =
      Checked(::readlinkat(directory, name.c_str(), target.data(), target.size()), "read link", path);
  return {target.data(), static_cast<std::size_t>(length)};
}

std::string ReadAll(int descriptor, const std::string& path) {
  std::string bytes;
  std::array<char, 64 * 1024> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
  while (true) {
    const ssize_t taken = ::read(descriptor, piece.data(), piece.size());
    if (taken == 0) return bytes;
    if (taken > 0) {
      bytes.append(piece.data(), static_cast<std::size_t>(taken));
    } else if (errno != EINTR) {
      ThrowErrno("read", path);
    }
  }
}

void WriteAll(int descriptor, std::string_view bytes, const std::string& path) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    // cppcheck-suppress danglingTemporaryLifetime ; the caller's bytes outlive the call
    const ssize_t written = ::write(descriptor, bytes.data() + done, bytes.size() - done);
    if (written >= 0) {
      done += static_cast<std::size_t>(written);
    } else if (errno != EINTR) {
      ThrowErrno("write", path);
    }
  }
}

void CopyEntries(int from, int to, const std::string& path) {
  for (const std::string& name : Names(from, path)) {
    const std::string entry_path = Below(path, name);
    const struct stat status = StatusAt(from, name, entry_path);
    const mode_t mode = status.st_mode & kModeBits;
    switch (status.st_mode & S_IFMT) {
      case S_IFREG:
        CopyFile(from, to, name, mode, entry_path);
        break;
      case S_IFDIR:
        CopyDirectory(from, to, name, mode, entry_path);
        break;
      case S_IFLNK:
        Checked(::symlinkat(LinkTarget(from, name, entry_path).c_str(), to, name.c_str()), "copy",
                entry_path);
        break;
      case S_IFIFO:
        CopyFifo(to, name, mode, entry_path);
        break;
      case S_IFSOCK:
        break;
      default:
        errno = ENOTSUP;
        ThrowErrno("copy the device node", entry_path);
    }
  }
}

void RemoveEntries(int directory, const std::string& path) {
  for (const std::string& name : Names(directory, path)) {
    const std::string entry_path = Below(path, name);
    const struct stat status = StatusAt(directory, name, entry_path);
    if (!S_ISDIR(status.st_mode)) {
      Checked(::unlinkat(directory, name.c_str(), 0), "remove", entry_path);
      continue;
    }
    if ((status.st_mode & S_IRWXU) != S_IRWXU) {
      Checked(::fchmodat(directory, name.c_str(), S_IRWXU, 0), "remove", entry_path);
    }
    RemoveEntries(OpenUnmountedDirectory(directory, name, entry_path).Get(), entry_path);
    Checked(::unlinkat(directory, name.c_str(), AT_REMOVEDIR), "remove", entry_path);
  }
}

}  // namespace lab
