#include "lab/runs/program_start.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "lab/plain/plain_way.h"
#include "lab/plain/process_tree.h"
#include "lab/runs/namespaces.h"

namespace lab {
namespace {

/// A copy of the program that was just written may for a moment be open for that in a process that another
/// thread made meanwhile.
constexpr int kExecAttempts = 10'000;

/// The report of one message: a text, with a descriptor or without.
union DescriptorControl {
  cmsghdr header;  // for the alignment
  std::array<char, CMSG_SPACE(sizeof(int))> bytes;
};

void ReportDescriptor(int report, const std::string& path, const Descriptor& descriptor) {
  iovec text{const_cast<char*>(path.data()), path.size()};  // only read from
  DescriptorControl control{};
  msghdr message{};
  message.msg_iov = &text;
  message.msg_iovlen = 1;
  message.msg_control = control.bytes.data();
  message.msg_controllen = control.bytes.size();
  cmsghdr* const header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  const int number = descriptor.Get();
  std::memcpy(CMSG_DATA(header), &number, sizeof number);
  Checked(::sendmsg(report, &message, MSG_NOSIGNAL), "report", path);
}

/// Mounts what the program needs in a root that becomes the current folder.
void FitOut(const ProgramStart& start, const std::string& path) {
  if (!MayMount()) EnterUserNamespace();
  EnterMountNamespace();  // takes the current folder along, but no descriptor
  const Descriptor root(Checked(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC), "open", path));

  for (const HostMount& mount : start.mounts) MountFromHost(root.Get(), mount);
  for (const auto& [device_path, size] : start.options.tmpfs) {
    ReportDescriptor(start.report, device_path, MountTmpfs(root.Get(), device_path, size));
  }
  if (start.options.with_proc) MountProc(root.Get());
}

void EnterRoot(const ProgramStart& start) {
  const std::string& path = start.root.Path().native();
  Checked(::fchdir(start.root.Directory()), "enter", path);
  if (!IsPlainWay()) FitOut(start, path);
  Checked(::chroot("."), "chroot to", path);
  Checked(::chdir(start.options.cwd.c_str()), "enter", start.options.cwd);
}

void ArrangeStandardStreams(const ProgramStart& start) {
  if (start.options.console == Console::Closed) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    return;
  }
  Checked(::dup2(start.standard_input, STDIN_FILENO), "arrange", "standard input");
  Checked(::dup2(start.standard_output, STDOUT_FILENO), "arrange", "standard output");
  Checked(::dup2(start.standard_error, STDERR_FILENO), "arrange", "standard error");
}

/// The caller may handle, ignore or block signals; the program starts without that.
void ResetSignals() {
  for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void DropFilePrivileges() {
  constexpr std::array kPrivileges{CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER};
  __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  Checked(::syscall(SYS_capget, &header, sets.data()), "read", "the capabilities");
  for (const int privilege : kPrivileges) {
    Checked(::prctl(PR_CAPBSET_DROP, privilege, 0, 0, 0), "drop", "a capability");
    const std::uint32_t others = ~(std::uint32_t{1} << privilege);
    sets[0].effective &= others;
    sets[0].permitted &= others;
    sets[0].inheritable &= others;
  }
  Checked(::syscall(SYS_capset, &header, sets.data()), "drop", "capabilities");
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void Start(const ProgramStart& start) {
  const pid_t parent = IsPlainWay() ? GoOnBelowAdopter(start.starter) : start.starter;
  Checked(::setpgid(0, 0), "make", "a process group");
  EnterRoot(start);
  Checked(::prctl(PR_SET_PDEATHSIG, SIGKILL), "tie", "the program to the one that runs it");
  if (::getppid() != parent) ::_exit(127);  // which ended before the program was tied to it

  std::vector<std::string> command = start.command;
  std::vector<std::string> environment = start.options.environment;
  const std::vector<char*> arguments = Pointers(command);
  const std::vector<char*> variables = Pointers(environment);
  ArrangeStandardStreams(start);
  Checked(::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC), "close",
          "the descriptors of this process");
  ResetSignals();
  ::umask(start.options.umask);
  if (start.options.drop_file_privileges) DropFilePrivileges();
  for (const auto& [resource, value] : start.options.rlimits) {
    const rlimit limit{value, value};
    Checked(::setrlimit(static_cast<__rlimit_resource>(resource), &limit), "set", "a resource limit");
  }
  for (int attempt = 0; attempt < kExecAttempts; ++attempt) {
    ::execve(arguments.front(), arguments.data(), variables.data());
    if (errno != ETXTBSY) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ThrowErrno("run", command.front());
}

}  // namespace

StartReport::StartReport() {
  std::array<int, 2> ends{};
  Checked(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), "make", "a pair of sockets");
  waiting = Descriptor(ends[0]);
  starting = AboveStandardStreams(Descriptor(ends[1]));
}

void BecomeProgram(const ProgramStart& start) noexcept {
  try {
    Start(start);
  } catch (const std::exception& error) {
    ::send(start.report, error.what(), std::strlen(error.what()), MSG_NOSIGNAL);
  }
  ::_exit(127);
}

std::map<std::string, Descriptor> AwaitStart(const Descriptor& report) {
  std::map<std::string, Descriptor> file_systems;
  while (true) {
    std::array<char, 16 * 1024> bytes{};
    iovec text{bytes.data(), bytes.size()};
    DescriptorControl control{};
    msghdr message{};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    const ssize_t size = ::recvmsg(report.Get(), &message, MSG_CMSG_CLOEXEC);
    if (size < 0 && errno == EINTR) continue;
    if (Checked(size, "wait for", "the program to start") == 0) return file_systems;

    std::string content(bytes.data(), static_cast<std::size_t>(size));
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr) throw std::runtime_error(content);
    int number = -1;
    std::memcpy(&number, CMSG_DATA(header), sizeof number);
    file_systems.emplace(std::move(content), Descriptor(number));
  }
}

Descriptor AboveStandardStreams(Descriptor descriptor) {
  if (descriptor.Get() > STDERR_FILENO) return descriptor;
  return Descriptor(
      Checked(::fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1), "move", "a descriptor"));
}

}  // namespace lab
