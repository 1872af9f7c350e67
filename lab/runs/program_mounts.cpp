#include "lab/runs/program_mounts.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "lab/images/file_copy.h"

namespace lab {
namespace {

constexpr const char* kKernelEntries = "/proc/sys/kernel";

/// Makes the folder `path` (absolute) below `host` a folder of the root too: a link where the host has a
/// link, a mount where it has a folder or the device has one already.
void ProvideHostDirectory(PrivateRoot& root, const std::filesystem::path& host, const std::string& path,
                          std::vector<HostMount>& mounts) {
  const std::filesystem::path host_path = host / path.substr(1);
  std::error_code ignored;
  const auto status = std::filesystem::symlink_status(host_path, ignored);
  if (!std::filesystem::exists(status)) return;
  if (std::filesystem::is_symlink(status)) {
    root.ProvideLink(path, std::filesystem::read_symlink(host_path));
  } else {
    root.ProvideDirectory(path);
  }
  const bool is_folder = OpenBelow(root.Directory(), path, O_PATH | O_DIRECTORY | O_NOFOLLOW).IsOpen();
  if (is_folder) mounts.push_back({host_path, path});
}

/// Makes the mount `mount`, so far nowhere, stand at a path of the device.
void Attach(const Descriptor& mount, int root, const std::string& device_path) {
  const Descriptor place = OpenBelow(root, device_path, O_PATH);
  if (!place.IsOpen()) ThrowErrno("mount at", device_path);
  Checked(::move_mount(mount.Get(), "", place.Get(), "", MOVE_MOUNT_F_EMPTY_PATH | MOVE_MOUNT_T_EMPTY_PATH),
          "mount at", device_path);
}

Descriptor CloneMount(const std::filesystem::path& host_path) {
  const unsigned flags = OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE;
  return Descriptor(Checked(::open_tree(AT_FDCWD, host_path.c_str(), flags), "mount", host_path.native()));
}

/// A new file system, not yet mounted anywhere.
Descriptor MakeTmpfs(std::uintmax_t size, mode_t mode) {
  constexpr std::string_view kAction = "make a file system of";
  const std::string bytes = std::to_string(size);
  std::array<char, 8> octal{};
  std::snprintf(octal.data(), octal.size(), "%o", mode & 07777U);

  const Descriptor settings(Checked(::fsopen("tmpfs", FSOPEN_CLOEXEC), "make", "a tmpfs"));
  Checked(::fsconfig(settings.Get(), FSCONFIG_SET_STRING, "size", bytes.c_str(), 0), kAction, bytes);
  Checked(::fsconfig(settings.Get(), FSCONFIG_SET_STRING, "mode", octal.data(), 0), kAction, bytes);
  Checked(::fsconfig(settings.Get(), FSCONFIG_CMD_CREATE, nullptr, nullptr, 0), kAction, bytes);
  return Descriptor(Checked(::fsmount(settings.Get(), FSMOUNT_CLOEXEC, 0), kAction, bytes));
}

}  // namespace

std::vector<HostMount> PrepareHostMounts(PrivateRoot& root, const std::filesystem::path& program,
                                         const std::string& program_device_path,
                                         const std::filesystem::path& libraries, bool with_host_programs) {
  std::vector<HostMount> mounts;
  for (const char* path : {"/usr/lib", "/usr/lib64", "/lib", "/lib64"}) {
    ProvideHostDirectory(root, libraries, path, mounts);
  }
  if (with_host_programs) {
    for (const char* path : {"/usr/bin", "/usr/libexec", "/bin"}) {
      ProvideHostDirectory(root, "/", path, mounts);
    }
  }
  mounts.push_back(PrepareProgramMount(root, program, program_device_path));
  return mounts;
}

HostMount PrepareProgramMount(PrivateRoot& root, const std::filesystem::path& program,
                              const std::string& device_path) {
  root.ProvideFile(device_path);
  return {program, device_path};
}

void MountFromHost(int root, const HostMount& mount) {
  const Descriptor clone = CloneMount(mount.host_path);
  mount_attr attributes{};
  attributes.attr_set = MOUNT_ATTR_RDONLY;
  Checked(::mount_setattr(clone.Get(), "", AT_EMPTY_PATH | AT_RECURSIVE, &attributes, sizeof attributes),
          "mount read-only", mount.host_path.native());
  Attach(clone, root, mount.device_path);
}

void MountProc(int root) {
  // Opened before the host's /proc covers it.
  const Descriptor entries = OpenBelow(root, kKernelEntries, O_PATH | O_DIRECTORY);
  if (!entries.IsOpen() && errno != ENOENT) ThrowErrno("open", kKernelEntries);
  Attach(CloneMount("/proc"), root, "/proc");
  const Descriptor tmpfs = MakeTmpfs(64 << 20, 0755);
  if (entries.IsOpen()) CopyEntries(entries.Get(), tmpfs.Get(), kKernelEntries);
  Attach(tmpfs, root, kKernelEntries);
}

Descriptor MountTmpfs(int root, const std::string& device_path, std::uintmax_t size) {
  const Descriptor folder = OpenBelow(root, device_path, O_PATH | O_DIRECTORY);
  if (!folder.IsOpen()) ThrowErrno("open", device_path);
  struct stat status {};
  Checked(::fstat(folder.Get(), &status), "examine", device_path);
  Descriptor tmpfs = MakeTmpfs(size, status.st_mode);
  CopyEntries(folder.Get(), tmpfs.Get(), device_path);
  Attach(tmpfs, root, device_path);
  return tmpfs;
}

Descriptor MountTmpfsOver(const std::string& host_path, std::uintmax_t size) {
  Descriptor tmpfs = MakeTmpfs(size, 0755);
  Checked(::move_mount(tmpfs.Get(), "", AT_FDCWD, host_path.c_str(), MOVE_MOUNT_F_EMPTY_PATH), "mount at",
          host_path);
  return tmpfs;
}

Descriptor WithoutMounts(const Descriptor& folder) {
  constexpr unsigned kFlags = OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_EMPTY_PATH;
  return Descriptor(Checked(::open_tree(folder.Get(), "", kFlags), "open", "a file system"));
}

void Unmount(const std::string& host_path) {
  Checked(::umount2(host_path.c_str(), MNT_DETACH), "unmount", host_path);
}

}  // namespace lab
