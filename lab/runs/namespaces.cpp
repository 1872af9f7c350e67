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
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "lab/plain/guarded_files.h"
#include "lab/plain/plain_way.h"

namespace lab {
namespace {

/// A folder that every Linux has and that nothing in the lab, on a device or in the program looks into.
constexpr const char* kOwnTemporaryFolder = "/sys";

void WriteKernelFile(const std::string& path, const std::string& text) {
  const Descriptor file(Checked(::open(path.c_str(), O_WRONLY | O_CLOEXEC), "open", path));
  WriteAll(file.Get(), text, path);
}

/// The user and group numbers are those of before the user namespace was entered.
void MapThisUser(const std::string& user, const std::string& group) {
  WriteKernelFile("/proc/self/setgroups", "deny");
  WriteKernelFile("/proc/self/uid_map", "0 " + user + " 1");
  WriteKernelFile("/proc/self/gid_map", "0 " + group + " 1");
}

void MountOwnTemporaryFolder() {
  Checked(::mount("devicelab", kOwnTemporaryFolder, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0700"),
          "make a file system in memory at", kOwnTemporaryFolder);
}

/// What came of doing, in a process that ends with it, all that the full way does.
struct Trial {
  /// Empty where nothing failed.
  std::string failure;
  bool has_user_namespace = false;
};

/// The first thing of a report: a user namespace was made.
constexpr char kUserNamespaceMade = '+';

void TryFullWay(int report) {
  if (!MayMount()) {
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    Checked(::unshare(CLONE_NEWUSER), "enter", "a user namespace");
    WriteAll(report, std::string(1, kUserNamespaceMade), "");
    MapThisUser(user, group);
  }
  EnterMountNamespace();
  MountOwnTemporaryFolder();
  const unsigned flags = OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE;
  const Descriptor copy(Checked(::open_tree(AT_FDCWD, "/", flags), "copy the mounts below", "/"));
  Checked(::chroot("/"), "chroot to", "/");
  Checked(::syscall(SYS_clone, CLONE_NEWPID | SIGCHLD, 0, 0, 0, 0), "enter", "a process namespace");
}

Trial Try() {
  std::array<int, 2> ends{};
  Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t child = Checked(::fork(), "fork", "");
  if (child == 0) {
    try {
      const pid_t trying = ::getpid();
      TryFullWay(writing.Get());
      if (::getpid() == trying) ::wait(nullptr);
    } catch (const std::exception& error) {
      WriteAll(writing.Get(), error.what(), "");
    }
    ::_exit(0);
  }
  writing.Close();
  Trial trial{ReadAll(reading.Get(), "a pipe")};
  ::waitpid(child, nullptr, 0);
  trial.has_user_namespace = trial.failure.starts_with(kUserNamespaceMade);
  if (trial.has_user_namespace) trial.failure.erase(0, 1);
  return trial;
}

/// A kernel setting that decides about user namespaces.
struct Setting {
  const char* name;
  const char* wanted;
  /// The values with which it forbids them, as far as it does.
  long forbidding_from;
  long forbidding_to;
  /// What is so then, for ordinary users.
  const char* meaning;
};

constexpr Setting kTakenAway{"kernel.apparmor_restrict_unprivileged_userns", "0", 1, 1,
                             "A user namespace is allowed here, but AppArmor takes its capabilities away"};
constexpr std::array kForbidding{
    Setting{"user.max_user_namespaces", "15000", 0, 99, "No user namespaces are allowed here"},
    Setting{"kernel.unprivileged_userns_clone", "1", 0, 0, "Only root may make user namespaces here"},
};

bool IsForbidding(const Setting& setting) {
  std::string entry = setting.name;
  std::ranges::replace(entry, '.', '/');
  long value = 0;
  if (!(std::ifstream("/proc/sys/" + entry) >> value)) return false;
  return value >= setting.forbidding_from && value <= setting.forbidding_to;
}

std::string Advice(const Setting& setting) {
  return std::string(setting.meaning) + ".\nRun this as root (sudo), or allow it, as root: sysctl -w " +
         setting.name + "=" + setting.wanted;
}

/// For an ordinary user, by what failed.
std::string RemedyFor(const Trial& trial) {
  if (trial.has_user_namespace) {
    if (IsForbidding(kTakenAway)) return Advice(kTakenAway);
    return "A user namespace is allowed here, but something takes its capabilities away.\nRun this as root "
           "(sudo).";
  }
  const auto* const setting = std::ranges::find_if(kForbidding, IsForbidding);
  if (setting != kForbidding.end()) return Advice(*setting);
  return "Run it as root: in a chroot, container or sandbox others may not.";
}

/// Three lines at most.
std::string Explain(const Trial& trial, const std::string& no_plain_way) {
  const bool is_root = ::geteuid() == 0;
  const std::string text = "This process may not make a private root and run programs in it (" +
                           trial.failure + (is_root ? "; " + no_plain_way : "") + ")";
  if (!std::filesystem::exists("/proc/self")) return text + ": there is no /proc here, mount it first.";
  if (!is_root) return text + ".\n" + RemedyFor(trial);
  return text +
         ": this container or sandbox withholds even the capability SYS_CHROOT, start it with that (docker, "
         "podman: --cap-add SYS_CHROOT).";
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
  if (IsPlainWay()) return;
  const Trial trial = Try();
  if (trial.failure.empty()) {
    if (!MayMount()) EnterUserNamespace();
    return;
  }
  if (const auto no_plain_way = WhyNoPlainWay()) throw std::runtime_error(Explain(trial, *no_plain_way));
  TakePlainWay(trial.failure);
}

std::optional<std::string> WhyNotPossible() {
  const Trial trial = Try();
  if (trial.failure.empty()) return std::nullopt;
  const auto no_plain_way = WhyNoPlainWay();
  if (!no_plain_way) return std::nullopt;
  return Explain(trial, *no_plain_way);
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
  MapThisUser(user, group);
}

void EnterMountNamespace() {
  Checked(::unshare(CLONE_NEWNS), "enter", "a mount namespace");
  if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) return;
  if (errno != EINVAL) ThrowErrno("make private the mounts below", "/");
  MakeRootAMountPoint();
}

void KeepTemporaryFilesToThisProcess() {
  if (IsPlainWay()) {
    GuardTemporaryFiles(Guarded::Roots);
    return;
  }
  EnterMountNamespace();
  MountOwnTemporaryFolder();
  Checked(::setenv("TMPDIR", kOwnTemporaryFolder, 1), "set", "TMPDIR");
}

}  // namespace lab
