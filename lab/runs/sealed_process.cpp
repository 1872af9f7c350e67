#include "lab/runs/sealed_process.h"

#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "lab/images/descriptor.h"
#include "lab/plain/plain_way.h"
#include "lab/plain/process_tree.h"
#include "lab/runs/namespaces.h"

namespace lab {
namespace {

void Seal() {
  Checked(::prctl(PR_SET_PDEATHSIG, SIGKILL), "tie", "a process to this one");
  if (IsPlainWay()) {
    AdoptDescendants();
  } else {
    EnterMountNamespace();
  }
  ::umask(022);
  const rlimit no_dump{0, 0};
  Checked(::setrlimit(RLIMIT_CORE, &no_dump), "set", "a resource limit");
}

}  // namespace

pid_t ForkSealed() {
  // fork(2) cannot make a process namespace; nothing here needs what the C library does around it.
  std::fflush(nullptr);
  const unsigned flags = IsPlainWay() ? SIGCHLD : CLONE_NEWPID | SIGCHLD;
  const auto pid = static_cast<pid_t>(Checked(::syscall(SYS_clone, flags, 0, 0, 0, 0), "fork", ""));
  if (pid != 0) return pid;
  try {
    Seal();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    ::_exit(127);
  }
  return 0;
}

void EndSealed(pid_t process) {
  if (IsPlainWay()) KillTree(process);
  ::kill(process, SIGKILL);
  while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

int KillAll(pid_t child) {
  if (IsPlainWay()) return KillOwnDescendants(child);
  if (::getpid() != 1) throw std::logic_error("KillAll() outside of a sealed process");
  // Reaches every process of the namespace but this one, and at once: none has the time to start another.
  ::kill(-1, SIGKILL);
  int status = 0;
  while (true) {
    int its_status = 0;
    const pid_t ended = ::waitpid(-1, &its_status, 0);
    if (ended < 0 && errno != EINTR) return status;
    if (ended == child) status = its_status;
  }
}

}  // namespace lab
