#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "lab/images/file_copy.h"
#include "lab/images/image.h"

namespace lab {
namespace {

[[noreturn]] void ThrowUnreadable(const std::string& path) {
  throw UnusableImage("has an entry that cannot be read: " + path + ": " +
                      std::generic_category().message(errno));
}

/// The file's bytes. One that grows while it is read, or that is larger than it says, costs no more memory
/// than there is room for.
std::string ReadFileWithin(const TreeBuilder& tree, int file, const std::string& path) {
  struct stat status {};
  if (::fstat(file, &status) != 0) ThrowUnreadable(path);
  if (!S_ISREG(status.st_mode)) throw UnusableImage("changes while it is read: " + path);
  tree.RequireRoom(static_cast<std::uintmax_t>(status.st_size));
  std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
  std::size_t size = 0;
  while (true) {
    const ssize_t taken = ::read(file, bytes.data() + size, bytes.size() - size);
    if (taken < 0 && errno == EINTR) continue;
    if (taken < 0) ThrowUnreadable(path);
    if (taken == 0) break;
    size += static_cast<std::size_t>(taken);
    tree.RequireRoom(size);
    if (size == bytes.size()) bytes.resize(2 * size);
  }
  bytes.resize(size);
  return bytes;
}

class DirectoryReader {
 public:
  explicit DirectoryReader(TreeBuilder& tree) : tree_(tree) {}

  /// Reads all entries of a directory whose device path is `path`, "" for the root.
  void Read(int folder, const std::string& path) {
    const std::size_t most = tree_.Limits().entries;
    const std::vector<std::string> names =
        Names(folder, path, most + 1);  // enough to see that it is too many
    if (names.size() > most) throw UnusableImage("holds more than " + std::to_string(most) + " entries");
    for (const std::string& name : names) {
      std::string entry_path = path;
      entry_path.append("/").append(name);
      ReadEntry(folder, name, entry_path);
    }
  }

 private:
  void ReadEntry(int folder, const std::string& name, const std::string& path) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) ThrowUnreadable(path);
    const mode_t mode = status.st_mode & 07777U;
    switch (status.st_mode & S_IFMT) {
      case S_IFREG:
        tree_.RequireRoom(static_cast<std::uintmax_t>(status.st_size));
        tree_.AddFile(path, mode, ReadFileWithin(tree_, OpenEntry(folder, name, O_RDONLY, path).Get(), path));
        break;
      case S_IFDIR:
        tree_.AddDirectory(path, mode);
        Read(OpenEntry(folder, name, O_RDONLY | O_DIRECTORY, path).Get(), path);
        break;
      case S_IFLNK:
        tree_.AddLink(path, LinkTarget(folder, name, path));
        break;
      case S_IFSOCK:
        break;
      case S_IFIFO:
        throw UnusableImage("has a FIFO: " + path);
      default:
        throw UnusableImage("has a device node: " + path);
    }
  }

  static Descriptor OpenEntry(int folder, const std::string& name, int flags, const std::string& path) {
    Descriptor entry(::openat(folder, name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!entry.IsOpen()) ThrowUnreadable(path);
    return entry;
  }

  TreeBuilder& tree_;
};

}  // namespace

void ReadDirectory(TreeBuilder& tree, int directory) {
  DirectoryReader(tree).Read(directory, "");
}

}  // namespace lab
