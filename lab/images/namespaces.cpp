#include "lab/images/namespaces.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <stdexcept>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"

namespace lab {
namespace {

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

/// A line that tells how to change a kernel setting, or nothing where the kernel does not have it.
std::string SettingAdvice(const std::string& name, const std::string& wanted, const std::string& where) {
  std::string entry = name;
  std::ranges::replace(entry, '.', '/');
  std::string value;
  if (!(std::ifstream("/proc/sys/" + entry) >> value)) return "";
  return "  sysctl -w " + name + "=" + wanted + "    (" + where + "; it is " + value + " here)\n";
}

std::string Explain(const std::string& failure) {
  std::string text = "This process may not make a private root and run programs in it (" + failure + ").\n";
  text += ::geteuid() == 0
              ? "It is root, but of a container or sandbox that withholds the capability SYS_ADMIN.\n"
                "Start that with the capability (docker, podman: --cap-add SYS_ADMIN), or, outside of it,\n"
              : "Run it as root, or ";
  text += "allow user namespaces to ordinary users:\n";
  text += SettingAdvice("user.max_user_namespaces", "15000", "any Linux");
  text += SettingAdvice("kernel.unprivileged_userns_clone", "1", "Debian");
  text += SettingAdvice("kernel.apparmor_restrict_unprivileged_userns", "0", "Ubuntu 23.10 and newer");
  return text;
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
  Checked(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "make private the mounts below", "/");
}

}  // namespace lab
