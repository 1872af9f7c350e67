#include "lab/runs/namespaces.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"

namespace lab {
namespace {

/// A folder that every Linux has and that nothing in the lab, on a device or in the program looks into.
constexpr const char* kOwnTemporaryFolder = "/sys";

void WriteKernelFile(const std::string& path, const std::string& text) {
  const Descriptor file(Checked(::open(path.c_str(), O_WRONLY | O_CLOEXEC), "open", path));
  WriteAll(file.Get(), text, path);
}

/// Does what a run does before it starts its program.
void TryNamespaces() {
  if (!MayMount()) EnterUserNamespace();
  EnterMountNamespace();
  Checked(::chroot("/"), "chroot to", "/");
}

/// What fails of that, tried in a process that ends with it.
std::string FailureOfTrial() {
  std::array<int, 2> ends{};
  Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t child = Checked(::fork(), "fork", "");
  if (child == 0) {
    try {
      TryNamespaces();
    } catch (const std::exception& error) {
      WriteAll(writing.Get(), error.what(), "");
    }
    ::_exit(0);
  }
  writing.Close();
  std::string failure = ReadAll(reading.Get(), "a pipe");
  ::waitpid(child, nullptr, 0);
  return failure;
}

/// A kernel setting that decides about user namespaces.
struct Setting {
  const char* name;
  const char* wanted;
  const char* where;
  /// The values with which it forbids them, as far as it does.
  long forbidding_from;
  long forbidding_to;
};

constexpr std::array kSettings{
    Setting{"user.max_user_namespaces", "15000", "any Linux", 0, 99},
    Setting{"kernel.unprivileged_userns_clone", "1", "Debian", 0, 0},
    Setting{"kernel.apparmor_restrict_unprivileged_userns", "0", "Ubuntu 23.10 and newer", 1, 1},
};

/// A line each for the settings of this kernel that forbid user namespaces.
std::string SettingsAdvice() {
  std::string text;
  for (const Setting& setting : kSettings) {
    std::string entry = setting.name;
    std::ranges::replace(entry, '.', '/');
    long value = 0;
    if (!(std::ifstream("/proc/sys/" + entry) >> value)) continue;
    if (value < setting.forbidding_from || value > setting.forbidding_to) continue;
    text += std::string("  sysctl -w ") + setting.name + "=" + setting.wanted + "    (" + setting.where +
            "; it is " + std::to_string(value) + " here)\n";
  }
  return text;
}

std::string Explain(const std::string& failure) {
  const std::string text =
      "This process may not make a private root and run programs in it (" + failure + ").\n";
  if (!std::filesystem::exists("/proc/self")) return text + "There is no /proc here: mount it first.\n";
  const bool is_root = ::geteuid() == 0;
  const std::string advice = SettingsAdvice();
  const std::string remedy =
      is_root ? "It is root, but of a container or sandbox that withholds the capability SYS_ADMIN.\n"
                "Start that with the capability (docker, podman: --cap-add SYS_ADMIN)"
              : "Run it as root";
  if (!advice.empty()) {
    return text + remedy + (is_root ? ", or, outside of it,\n" : ", or ") +
           "allow user namespaces to ordinary users:\n" + advice;
  }
  return text + remedy + (is_root ? ".\n" : ": in a chroot, container or sandbox others may not.\n");
}

/// In a plain chroot the root folder is no mount point: nothing says that mounts below it are not to spread,
/// and the mount that it lies in cannot be named. So a copy of all that can be seen becomes the root, in a
/// place of which one can say it. The current folder is kept.
void MakeRootAMountPoint() {
  const std::filesystem::path folder = std::filesystem::current_path();
  const unsigned flags = OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE;
  const Descriptor copy(Checked(::open_tree(AT_FDCWD, "/", flags), "copy the mounts below", "/"));
  mount_attr attributes{};
  attributes.propagation = MS_PRIVATE;
  Checked(::mount_setattr(copy.Get(), "", AT_EMPTY_PATH | AT_RECURSIVE, &attributes, sizeof attributes),
          "make private the mounts below", "/");
  Checked(::mount("none", "/proc", nullptr, MS_PRIVATE, nullptr), "make private", "/proc");
  Checked(::move_mount(copy.Get(), "", AT_FDCWD, "/proc", MOVE_MOUNT_F_EMPTY_PATH), "mount at", "/proc");
  Checked(::fchdir(copy.Get()), "enter", "/");
  Checked(::chroot("."), "chroot to", "/");
  Checked(::chdir(folder.c_str()), "enter", folder.native());
}

}  // namespace

void EnterNamespaces() {
  if (MayMount()) return;
  if (const auto reason = WhyNotPossible()) throw std::runtime_error(*reason);
  EnterUserNamespace();
}

std::optional<std::string> WhyNotPossible() {
  const std::string failure = FailureOfTrial();
  if (failure.empty()) return std::nullopt;
  return Explain(failure);
}

bool MayMount() {
  __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  Checked(::syscall(SYS_capget, &header, sets.data()), "read", "the capabilities");
  constexpr std::uint32_t kNeeded = (1U << CAP_SYS_ADMIN) | (1U << CAP_SYS_CHROOT);
  return (sets[0].effective & kNeeded) == kNeeded;
}

void EnterUserNamespace() {
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  Checked(::unshare(CLONE_NEWUSER), "enter", "a user namespace");
  WriteKernelFile("/proc/self/setgroups", "deny");
  WriteKernelFile("/proc/self/uid_map", "0 " + user + " 1");
  WriteKernelFile("/proc/self/gid_map", "0 " + group + " 1");
}

void EnterMountNamespace() {
  Checked(::unshare(CLONE_NEWNS), "enter", "a mount namespace");
  if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) return;
  if (errno != EINVAL) ThrowErrno("make private the mounts below", "/");
  MakeRootAMountPoint();
}

void KeepTemporaryFilesToThisProcess() {
  EnterMountNamespace();
  Checked(::mount("devicelab", kOwnTemporaryFolder, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0700"),
          "make a file system in memory at", kOwnTemporaryFolder);
  Checked(::setenv("TMPDIR", kOwnTemporaryFolder, 1), "set", "TMPDIR");
}

}  // namespace lab
