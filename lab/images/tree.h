#pragma once

#include <sys/types.h>

#include <filesystem>
#include <iosfwd>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace lab {

/// One entry of a device's file tree.
struct Entry {
  enum class Kind { File, Directory, Link, Other };

  Kind kind = Kind::File;
  /// The permission bits, with the set-user-ID, set-group-ID and sticky bits.
  mode_t mode = 0;
  /// A file's bytes or a link's target; empty for the other kinds.
  std::string content;

  bool operator==(const Entry&) const = default;
};

/// For the messages of failed tests.
std::ostream& operator<<(std::ostream& out, const Entry& entry);

/// The entries by their absolute paths on the device ("/usr/kelp/etc/info.conf"); the root itself is not
/// among them.
using Tree = std::map<std::string, Entry>;

/// Reads everything below `root`. Links are never followed; FIFOs, sockets and devices are never opened.
/// Throws std::system_error, naming the path, for what cannot be read.
Tree ReadTree(const std::filesystem::path& root);

/// As above, for the folder open as `directory`.
Tree ReadTree(int directory);

/// The entry `name` of the folder open as `directory`, without what is below it. `path` is for the message of
/// the exception.
Entry ReadEntry(int directory, const std::string& name, const std::string& path);

/// The root has an entry of the lab's own, a mount point for example, where a device has another one.
class MountPointConflict : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Makes the entries of `tree`, with the directories above each among them, below the folder open as
/// `directory`. A directory that exists gets the tree's mode. Nothing outside of the folder is touched, and
/// no link is followed. Entries of the kind Other are left out. Throws MountPointConflict with the path of an
/// entry that exists, and std::system_error.
void WriteTree(const Tree& tree, int directory);

/// What happened between two states of a device. Each path is in one of the lists, each list in path order.
struct TreeDiff {
  struct Move {
    std::string from;
    std::string to;

    bool operator==(const Move&) const = default;
  };

  /// New paths.
  std::vector<std::string> written;
  /// Paths whose kind, mode or content differs.
  std::vector<std::string> changed;
  /// Files and links that are gone from one path and stand with the same content at a new one, ordered by
  /// `from`. Of several that have the same content, those that keep their name go together first; empty files
  /// go together only so.
  std::vector<Move> moved;
  /// Paths that are gone.
  std::vector<std::string> removed;

  bool operator==(const TreeDiff&) const = default;
};

TreeDiff Diff(const Tree& before, const Tree& after);

}  // namespace lab
