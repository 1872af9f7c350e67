#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "lab/images/tree.h"

namespace lab {

/// An image that is not a usable device, with one line that says why.
class UnusableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How much a device may hold. Directories count as entries whether an image names them or not.
struct ImageLimits {
  std::uintmax_t bytes = std::uintmax_t{64} << 20;
  std::size_t entries = 20'000;
};

/// The device path of what an image calls `name`: "./etc//info.conf" is "/etc/info.conf"; "." and "/" are
/// "/". Throws UnusableImage for any other absolute name, for one with ".." and for one that is too long.
std::string DevicePathOf(std::string_view name);

/// Builds the tree of a device entry by entry, and checks each entry: only what a backup of a device can hold
/// gets in, and nothing below anything but a directory.
///
/// The operations take paths as DevicePathOf returns them and throw UnusableImage.
class TreeBuilder {
 public:
  explicit TreeBuilder(const ImageLimits& limits) : limits_(limits) {}

  /// From here on an entry may replace an earlier one. Two of one name are still refused among those that
  /// come after the call.
  void BeginOverlay() { named_.clear(); }

  void AddDirectory(const std::string& path, mode_t mode);
  void AddFile(const std::string& path, mode_t mode, std::string bytes);
  /// Refuses a target that leads out of the device.
  void AddLink(const std::string& path, const std::string& target);
  /// A second name for the file at `original`; it becomes a file of its own.
  void AddHardLink(const std::string& path, const std::string& original);

  /// Checks that a file of `size` bytes still fits. A reader asks before it takes the bytes in.
  void RequireRoom(std::uintmax_t size) const;
  const ImageLimits& Limits() const { return limits_; }

  Tree Take() { return std::move(tree_); }

 private:
  void Put(const std::string& path, Entry entry);
  void RequireDirectory(const std::string& path, const std::string& entry_path);
  void RequireEntries(std::size_t count) const;

  ImageLimits limits_;
  Tree tree_;
  /// What was added by its name, and not just as a directory on the way to something.
  std::set<std::string, std::less<>> named_;
  std::uintmax_t bytes_ = 0;
};

}  // namespace lab
