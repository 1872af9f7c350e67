#pragma once

#include <string>

namespace testing_support {

/// Mounts from here on are seen by this process alone, and vanish with it. To be made before the private root
/// in which something is mounted: folders that are already open stay with the machine's mounts.
struct OwnMounts {
  OwnMounts();
};

/// A file system of its own with `size` bytes, mounted at `path` until it goes out of scope.
class SmallDisk {
 public:
  SmallDisk(std::string path, const std::string& size);
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk();

 private:
  std::string path_;
};

}  // namespace testing_support
