#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/images/tree.h"

namespace lab {

/// An image that cannot be laid out, with one line that says why.
class UnusableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A device has an entry where the root has one of the lab's own: a mount point, for example.
class OccupiedPlace : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How much a device may hold. Folders count as entries whether an image names them or not.
struct ImageLimits {
  std::uintmax_t bytes = std::uintmax_t{64} << 20;
  std::size_t entries = 20'000;
};

/// The device path of what an image calls `name`: "./etc//info.conf" is "/etc/info.conf", "." is "/". Throws
/// UnusableImage for an absolute name, for one with ".." and for one that is longer than any path.
std::string DevicePathOf(std::string_view name);

/// Lays a device out, entry by entry, in a private root, and keeps account of it. Whatever the entries are
/// called and wherever they point, nothing outside of the root is touched: each is made in a folder that was
/// itself made or found without following any link.
///
/// The operations take paths as DevicePathOf gives them. They throw UnusableImage for what no backup of a
/// device has, OccupiedPlace, or std::system_error where the root cannot be written.
class DeviceLayout {
 public:
  DeviceLayout(PrivateRoot& root, const ImageLimits& limits) : root_(root), limits_(limits) {}

  /// From here on entries may stand where others were laid before, and replace them. Two of one name are
  /// still refused among those that come now.
  void BeginOverlay();

  void AddDirectory(const std::string& path, mode_t mode);
  void AddFile(const std::string& path, mode_t mode, std::string_view bytes);
  /// A target that leads out of the device is refused.
  void AddLink(const std::string& path, const std::string& target);
  /// A second name for the file laid at `original`; it becomes a file of its own.
  void AddHardLink(const std::string& path, const std::string& original);

  /// How many bytes there is still room for. A reader asks before it takes in a file of `size` bytes, which
  /// is refused where it is too large.
  std::uintmax_t Room() const { return limits_.bytes - bytes_; }
  void RequireRoom(std::uintmax_t size) const;
  const ImageLimits& Limits() const { return limits_; }

 private:
  struct Laid {
    Entry::Kind kind = Entry::Kind::Directory;
    bool is_named = false;  // and not just a folder on the way to something
    unsigned layer = 0;
  };

  void Count(const std::string& path);
  void CountOne();
  bool Replaces(const std::string& path, Entry::Kind kind);
  void EnterFolderOf(const std::string& path);
  void MakeFolder(const std::string& path, mode_t mode, bool is_named);

  PrivateRoot& root_;
  ImageLimits limits_;
  std::map<std::string, Laid, std::less<>> laid_;
  unsigned layer_ = 0;
  std::size_t entries_ = 0;
  std::uintmax_t bytes_ = 0;
  std::string folder_path_;  // of folder_
  Descriptor folder_;
};

}  // namespace lab
