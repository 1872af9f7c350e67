#pragma once

namespace testing_support {

/// The system calls that are refused to this process and those that it starts from here on.
enum class Refused {
  /// As a container refuses them by default: mounts, namespaces, the root folder's exchange and what else
  /// takes
  /// SYS_ADMIN.
  AsInContainer,
  /// chroot(2) as well.
  AndChroot,
  /// Mounts alone, with EACCES: a user namespace can be entered, and is of no use.
  MountsAlone,
};

/// Throws std::runtime_error.
void Refuse(Refused refused);

}  // namespace testing_support
