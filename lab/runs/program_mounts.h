#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"

namespace lab {

/// A file or folder of the host and the device path at which it is mounted, to be read only.
struct HostMount {
  std::filesystem::path host_path;
  std::string device_path;
};

/// Prepares the root for the mounts that a program needs: the program itself, the library folders (lib,
/// lib64, and those in usr) of the folder `libraries`, "/" for the host's own, and the host's programs too
/// where a wrapper is to run.
std::vector<HostMount> PrepareHostMounts(PrivateRoot& root, const std::filesystem::path& program,
                                         const std::string& program_device_path,
                                         const std::filesystem::path& libraries, bool with_host_programs);

/// Prepares the root for one more program of the host at `device_path`.
HostMount PrepareProgramMount(PrivateRoot& root, const std::filesystem::path& program,
                              const std::string& device_path);

// The rest is for the process that becomes the program, in its own mount namespace. `root` is the private
// root, opened in that namespace.

void MountFromHost(int root, const HostMount& mount);

/// Mounts the host's /proc at the device's, with the device's entries in /proc/sys/kernel.
void MountProc(int root);

/// Mounts an own file system of `size` bytes at a folder, with a copy of the folder's entries. Gives the file
/// system's root, which outlives the mount.
Descriptor MountTmpfs(int root, const std::string& device_path, std::uintmax_t size);

/// Mounts an own file system of at most `size` bytes over a folder of this process's mount namespace. Gives
/// its root.
Descriptor MountTmpfsOver(const std::string& host_path, std::uintmax_t size);

/// The file system whose root is open as `folder`, without what is or will be mounted in it.
Descriptor WithoutMounts(const Descriptor& folder);

/// Undoes a mount in this process's mount namespace, with all that is mounted in it.
void Unmount(const std::string& host_path);

}  // namespace lab
