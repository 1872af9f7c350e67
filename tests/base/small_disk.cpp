#include "tests/base/small_disk.h"

#include <sys/mount.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "lab/runs/namespaces.h"
#include "tests/support/full_way.h"

namespace testing_support {

OwnMounts::OwnMounts() {
  RequireFullWay();
  static const bool entered = (lab::EnterMountNamespace(), true);
  static_cast<void>(entered);
}

SmallDisk::SmallDisk(std::string path, const std::string& size) : path_(std::move(path)) {
  if (::mount("tmpfs", path_.c_str(), "tmpfs", 0, ("size=" + size).c_str()) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot mount a disk at " + path_);
  }
}

SmallDisk::~SmallDisk() {
  ::umount2(path_.c_str(), MNT_DETACH);
}

}  // namespace testing_support
