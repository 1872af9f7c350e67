// Runs a program and interferes with single system calls of it, where strace can only let them fail:
//
//   tamper shorten CALL ORDINAL AMOUNT PROGRAM...   the ORDINALth CALL moves at most AMOUNT bytes
//   tamper shorten-from INDEX AMOUNT PROGRAM...     so does every transfer from the INDEXth of all calls on
//   tamper kill-before INDEX PROGRAM...             the program is killed just before the INDEXth of all
//   calls tamper kill-after INDEX PROGRAM...              or just after it
//
// Calls are counted from 1, the execve that starts the program being the first, as in a record of strace. The
// status is the program's own; a program that a signal ends takes tamper with it by the same signal.
#include <elf.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kUsageError = 125;

/// A call whose amount can be lessened, and the place of the amount among its arguments.
struct Shortenable {
  const char* name;
  long number;
  int argument;
  bool is_transfer;
};
constexpr std::array kShortenable{
    Shortenable{"read", SYS_read, 2, true},       Shortenable{"write", SYS_write, 2, true},
    Shortenable{"pread64", SYS_pread64, 2, true}, Shortenable{"pwrite64", SYS_pwrite64, 2, true},
    Shortenable{"brk", SYS_brk, 0, false},
};

struct Order {
  enum class Kind { Shorten, ShortenFrom, KillBefore, KillAfter } kind;
  const Shortenable* call;  // of Shorten
  long place;               // the ordinal or the index
  std::uint64_t amount;
};

[[noreturn]] void Fail(const char* action) {
  std::perror(action);
  std::_Exit(kUsageError);
}

#if defined(__x86_64__)
void SetArgument(pid_t pid, int argument, std::uint64_t value) {
  user_regs_struct registers{};
  if (::ptrace(PTRACE_GETREGS, pid, nullptr, &registers) != 0) Fail("ptrace");
  (argument == 0 ? registers.rdi : registers.rdx) = value;
  if (::ptrace(PTRACE_SETREGS, pid, nullptr, &registers) != 0) Fail("ptrace");
}
#elif defined(__aarch64__)
void SetArgument(pid_t pid, int argument, std::uint64_t value) {
  user_regs_struct registers{};
  iovec whole{&registers, sizeof registers};
  if (::ptrace(PTRACE_GETREGSET, pid, NT_PRSTATUS, &whole) != 0) Fail("ptrace");
  registers.regs[argument] = value;
  if (::ptrace(PTRACE_SETREGSET, pid, NT_PRSTATUS, &whole) != 0) Fail("ptrace");
}
#else
#error "tamper does not know how this processor passes the arguments of system calls"
#endif

const Shortenable* FindByNumber(std::uint64_t number) {
  for (const Shortenable& call : kShortenable) {
    if (static_cast<std::uint64_t>(call.number) == number) return &call;
  }
  return nullptr;
}

const Shortenable* FindByName(const char* name) {
  for (const Shortenable& call : kShortenable) {
    if (std::strcmp(call.name, name) == 0) return &call;
  }
  return nullptr;
}

class Tamperer {
 public:
  Tamperer(pid_t pid, const Order& order) : pid_(pid), order_(order) {}

  /// The program is about to enter a call, or has just left one.
  void AtStop() {
    __ptrace_syscall_info info{};
    if (::ptrace(PTRACE_GET_SYSCALL_INFO, pid_, sizeof info, &info) < 0) Fail("ptrace");
    if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
      ++index_;
      if (order_.kind == Order::Kind::KillBefore && index_ == order_.place) Kill();
      if (order_.kind == Order::Kind::Shorten || order_.kind == Order::Kind::ShortenFrom) Shorten(info);
    } else if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
      Restore();
      if (order_.kind == Order::Kind::KillAfter && index_ == order_.place) Kill();
    }
  }

 private:
  void Kill() const { ::kill(pid_, SIGKILL); }

  void Shorten(const __ptrace_syscall_info& info) {
    const Shortenable* const call = FindByNumber(info.entry.nr);
    if (call == nullptr) return;
    const bool is_meant = order_.kind == Order::Kind::Shorten
                              ? call == order_.call && ++ordinal_ == order_.place
                              : call->is_transfer && index_ >= order_.place;
    if (!is_meant || info.entry.args[call->argument] <= order_.amount) return;
    shortened_ = call;
    asked_ = info.entry.args[call->argument];
    SetArgument(pid_, call->argument, order_.amount);
  }

  /// The program may count on finding the registers of the arguments as it left them.
  void Restore() {
    if (shortened_ != nullptr) SetArgument(pid_, shortened_->argument, asked_);
    shortened_ = nullptr;
  }

  pid_t pid_;
  Order order_;
  long index_ = 1;  // the execve has happened
  long ordinal_ = 0;
  const Shortenable* shortened_ = nullptr;
  std::uint64_t asked_ = 0;  // the amount, before it was shortened
};

/// Gives the program's wait status.
int Supervise(pid_t pid, const Order& order) {
  int status = 0;
  if (::waitpid(pid, &status, 0) < 0 || !WIFSTOPPED(status)) return status;
  if (::ptrace(PTRACE_SETOPTIONS, pid, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
    Fail("ptrace");

  Tamperer tamperer(pid, order);
  long signal = 0;
  while (true) {
    // It may have been killed meanwhile: the next wait tells.
    ::ptrace(PTRACE_SYSCALL, pid, nullptr, signal);
    if (::waitpid(pid, &status, 0) < 0) Fail("waitpid");
    if (!WIFSTOPPED(status)) return status;
    const bool is_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
    signal = is_call ? 0 : WSTOPSIG(status);
    if (is_call) tamperer.AtStop();
  }
}

/// Gives the number of arguments that the order takes, or 0 when it is none.
int ParseOrder(int count, char* arguments[], Order& order) {
  if (count < 2) return 0;
  const auto number = [&](int place) { return std::strtol(arguments[place], nullptr, 10); };
  if (std::strcmp(arguments[1], "shorten") == 0 && count > 5) {
    order = {Order::Kind::Shorten, FindByName(arguments[2]), number(3),
             static_cast<std::uint64_t>(number(4))};
    return order.call == nullptr ? 0 : 5;
  }
  if (std::strcmp(arguments[1], "shorten-from") == 0 && count > 4) {
    order = {Order::Kind::ShortenFrom, nullptr, number(2), static_cast<std::uint64_t>(number(3))};
    return 4;
  }
  if (std::strcmp(arguments[1], "kill-before") == 0 && count > 3) {
    order = {Order::Kind::KillBefore, nullptr, number(2), 0};
    return 3;
  }
  if (std::strcmp(arguments[1], "kill-after") == 0 && count > 3) {
    order = {Order::Kind::KillAfter, nullptr, number(2), 0};
    return 3;
  }
  return 0;
}

}  // namespace

int main(int count, char* arguments[]) {
  Order order{};
  const int taken = ParseOrder(count, arguments, order);
  if (taken == 0) {
    std::fputs("usage: tamper shorten|shorten-from|kill-before|kill-after ... PROGRAM...\n", stderr);
    return kUsageError;
  }
  const pid_t pid = ::fork();
  if (pid < 0) Fail("fork");
  if (pid == 0) {
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) Fail("ptrace");
    ::execv(arguments[taken], arguments + taken);
    Fail(arguments[taken]);
  }
  const int status = Supervise(pid, order);
  if (WIFSIGNALED(status)) {
    std::signal(WTERMSIG(status), SIG_DFL);
    ::raise(WTERMSIG(status));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : kUsageError;
}
