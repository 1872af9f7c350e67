#include "lab/plain/process_tree.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

#include "lab/images/descriptor.h"

namespace lab {
namespace {

namespace fs = std::filesystem;

/// More generations than a program starts while it is being stopped.
constexpr int kRounds = 1000;

/// What a killed process may take to end: it may be busy in the kernel.
constexpr std::chrono::seconds kLongestEnd{10};

/// Calls `visit` with the number of each process that /proc has.
template <typename Visit>
void ForEachProcess(Visit visit) {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", ignored)) {
    const std::string name = entry.path().filename();
    pid_t process = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (error == std::errc() && end == name.data() + name.size()) visit(process);
  }
}

/// The parent of a process that lives, or 0.
pid_t LivingParent(pid_t process) {
  std::string text(4096, '\0');
  const Descriptor file(::open(("/proc/" + std::to_string(process) + "/stat").c_str(), O_RDONLY | O_CLOEXEC));
  const ssize_t size = file.IsOpen() ? ::read(file.Get(), text.data(), text.size()) : -1;
  text.resize(static_cast<std::size_t>(std::max(size, ssize_t{0})));  // it may have ended meanwhile
  const std::size_t name_end = text.rfind(") ");                      // the name may hold anything
  if (name_end == std::string::npos || name_end + 4 >= text.size()) return 0;
  const char state = text[name_end + 2];
  if (state == 'Z' || state == 'X') return 0;
  pid_t parent = 0;
  std::from_chars(text.data() + name_end + 4, text.data() + text.size(), parent);
  return parent;
}

std::set<pid_t> Descendants(pid_t ancestor) {
  std::multimap<pid_t, pid_t> children;
  ForEachProcess([&](pid_t process) { children.emplace(LivingParent(process), process); });
  std::set<pid_t> found;
  std::set<pid_t> rising{ancestor};
  while (!rising.empty()) {
    const auto [first, last] = children.equal_range(rising.extract(rising.begin()).value());
    for (auto child = first; child != last; ++child) {
      if (found.insert(child->second).second) rising.insert(child->second);
    }
  }
  return found;
}

/// All are stopped before the first is killed: a process that is stopped starts no other.
void KillDescendants(pid_t ancestor) {
  std::set<pid_t> stopped;
  bool is_new = true;
  for (int round = 0; is_new && round < kRounds; ++round) {
    is_new = false;
    for (const pid_t process : Descendants(ancestor)) {
      if (!stopped.insert(process).second) continue;
      is_new = true;
      ::kill(process, SIGSTOP);
    }
  }
  for (const pid_t process : stopped) ::kill(process, SIGKILL);
  const auto deadline = std::chrono::steady_clock::now() + kLongestEnd;
  while (std::chrono::steady_clock::now() < deadline && !Descendants(ancestor).empty()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

/// As the number of a process that is sent a signal, others than positive ones mean many, and 1 is nobody's
/// child.
void RequireOne(pid_t process) {
  if (process <= 1)
    throw std::logic_error("to kill process " + std::to_string(process) + " is to kill others");
}

[[noreturn]] void EndAs(int status) {
  if (!WIFSIGNALED(status)) ::_exit(WEXITSTATUS(status));
  const rlimit no_dump{0, 0};
  ::setrlimit(RLIMIT_CORE, &no_dump);
  ::signal(WTERMSIG(status), SIG_DFL);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::kill(::getpid(), WTERMSIG(status));
  ::_exit(127);
}

}  // namespace

void AdoptDescendants() {
  Checked(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), "adopt", "what a program starts");
}

int KillOwnDescendants(pid_t child) {
  RequireOne(child);
  int status = 0;
  ::kill(child, SIGKILL);
  while (true) {
    int its_status = 0;
    pid_t ended = ::waitpid(-1, &its_status, WNOHANG);
    if (ended == 0) {
      KillDescendants(::getpid());
      ended = ::waitpid(-1, &its_status, 0);
    }
    if (ended < 0 && errno != EINTR) return status;
    if (ended == child) status = its_status;
  }
}

void KillTree(pid_t process) {
  RequireOne(process);
  ::kill(process, SIGSTOP);
  KillDescendants(process);
  ::kill(process, SIGKILL);
}

pid_t GoOnBelowAdopter(pid_t starter) {
  Checked(::prctl(PR_SET_PDEATHSIG, SIGKILL), "tie", "a process to the one that started it");
  if (::getppid() != starter) ::_exit(127);
  AdoptDescendants();
  // A terminal's signals go to all of its processes; when this one ends is for its starter and its child to
  // say.
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  const pid_t adopter = ::getpid();
  const pid_t child = Checked(::fork(), "fork", "");
  if (child == 0) return adopter;
  ::close_range(0, ~0U, 0);  // pipes end with the program
  // Left as it is until then: one that was waited for may have lent its number to another process.
  siginfo_t end{};
  while (::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
  }
  EndAs(KillOwnDescendants(child));
}

void KillThoseRootedBelow(const char* folder) {
  const std::string prefix = std::string(folder) + "/";
  ForEachProcess([&](pid_t process) {
    std::error_code ignored;
    const std::string root = fs::read_symlink("/proc/" + std::to_string(process) + "/root", ignored);
    if (root.starts_with(prefix)) ::kill(process, SIGKILL);
  });
}

}  // namespace lab
