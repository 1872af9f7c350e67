// Runs a program and interferes with single system calls of it, where strace can only let them fail:
//
//   tamper shorten CALL ORDINAL AMOUNT PROGRAM...   the ORDINALth CALL moves at most AMOUNT bytes
//   tamper shorten-from INDEX AMOUNT PROGRAM...     so does every transfer from the INDEXth of all calls on
//   tamper refuse-memory INDEX PROGRAM...           from that call on the kernel has no memory to give
//   tamper kill-before INDEX PROGRAM...             the program is killed just before the INDEXth of all
//   calls tamper kill-after INDEX PROGRAM...              or just after it tamper signal INDEX NUMBER
//   PROGRAM...           or is sent the signal of that number at it tamper limit RESOURCE VALUE PROGRAM...
//   the program gets so much of FSIZE, AS, DATA, NOFILE or STACK
//
// Calls are counted from 1, the execve that starts the program being the first, as in a record of strace. The
// status is the program's own; a program that a signal ends takes tamper with it by the same signal. An order
// that was not carried out gives status 125: nobody may take a run that nothing disturbed for a trial. A
// limited program that ends, in whatever way, before its main has begun gives status 124: that is the
// loader's end and not the program's. (Its main begins with that it ignores SIGPIPE; no loader does.)
#include <elf.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
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

constexpr int kNoTrial = 125;
constexpr int kNotStarted = 124;
constexpr std::uint64_t kMoreThanThereIs = std::uint64_t{1} << 62U;

/// A call that asks for an amount, and the place of the amount among its arguments.
struct Asking {
  const char* name;
  long number;
  int argument;
  bool is_transfer;
  std::uint64_t refused;  // the amount that the kernel never gives; of calls for memory
};
constexpr std::array kAsking{
    Asking{"read", SYS_read, 2, true, 0},
    Asking{"write", SYS_write, 2, true, 0},
    Asking{"pread64", SYS_pread64, 2, true, 0},
    Asking{"pwrite64", SYS_pwrite64, 2, true, 0},
    Asking{"brk", SYS_brk, 0, false, 0},  // a break that stays where it was
    Asking{"mmap", SYS_mmap, 1, false, kMoreThanThereIs},
    Asking{"mremap", SYS_mremap, 2, false, kMoreThanThereIs},
};

struct Order {
  enum class Kind { Shorten, ShortenFrom, RefuseMemory, KillBefore, KillAfter, Signal, Limit } kind;
  const Asking* call;    // of Shorten
  long place;            // the ordinal, the index or, of Limit, the resource
  std::uint64_t amount;  // of bytes, of the resource, or the signal's number
};

struct Resource {
  const char* name;
  int number;
};
constexpr std::array kResources{Resource{"FSIZE", RLIMIT_FSIZE}, Resource{"AS", RLIMIT_AS},
                                Resource{"DATA", RLIMIT_DATA}, Resource{"NOFILE", RLIMIT_NOFILE},
                                Resource{"STACK", RLIMIT_STACK}};

[[noreturn]] void Fail(const char* action) {
  std::perror(action);
  std::_Exit(kNoTrial);
}

#if defined(__x86_64__)
void SetArgument(pid_t pid, int argument, std::uint64_t value) {
  user_regs_struct registers{};
  if (::ptrace(PTRACE_GETREGS, pid, nullptr, &registers) != 0) Fail("ptrace");
  const std::array places{&registers.rdi, &registers.rsi, &registers.rdx};
  *places.at(static_cast<std::size_t>(argument)) = value;
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

const Asking* FindByNumber(std::uint64_t number) {
  for (const Asking& call : kAsking) {
    if (static_cast<std::uint64_t>(call.number) == number) return &call;
  }
  return nullptr;
}

const Asking* FindByName(const char* name) {
  for (const Asking& call : kAsking) {
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
      if (order_.kind == Order::Kind::KillBefore && index_ == order_.place) Send(SIGKILL);
      if (order_.kind == Order::Kind::Signal && index_ == order_.place) Send(static_cast<int>(order_.amount));
      NoticeMain(info);
      ChangeAmount(info);
    } else if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
      Restore(info);
      if (order_.kind == Order::Kind::KillAfter && index_ == order_.place) Send(SIGKILL);
    }
  }

  bool IsCarriedOut() const { return is_carried_out_; }

 private:
  void Send(int signal) {
    ::kill(pid_, signal);
    is_carried_out_ = true;
  }

  /// A limit is there from the beginning; it is the program's from its main on.
  void NoticeMain(const __ptrace_syscall_info& info) {
    is_carried_out_ |= order_.kind == Order::Kind::Limit && info.entry.nr == SYS_rt_sigaction &&
                       info.entry.args[0] == SIGPIPE;
  }

  bool IsMeant(const Asking& call, std::uint64_t asked) {
    switch (order_.kind) {
      case Order::Kind::Shorten:
        return &call == order_.call && ++ordinal_ == order_.place && asked > order_.amount;
      case Order::Kind::ShortenFrom:
        return call.is_transfer && index_ >= order_.place && asked > order_.amount;
      case Order::Kind::RefuseMemory:
        return !call.is_transfer && index_ >= order_.place && asked != call.refused;
      case Order::Kind::KillBefore:
      case Order::Kind::KillAfter:
      case Order::Kind::Signal:
      case Order::Kind::Limit:
        break;
    }
    return false;
  }

  void ChangeAmount(const __ptrace_syscall_info& info) {
    const Asking* const call = FindByNumber(info.entry.nr);
    if (call == nullptr || !IsMeant(*call, info.entry.args[call->argument])) return;
    changed_ = call;
    asked_ = info.entry.args[call->argument];
    given_ = order_.kind == Order::Kind::RefuseMemory ? call->refused : order_.amount;
    SetArgument(pid_, call->argument, given_);
  }

  /// The program may count on finding the registers of the arguments as it left them.
  void Restore(const __ptrace_syscall_info& info) {
    if (changed_ == nullptr) return;
    SetArgument(pid_, changed_->argument, asked_);
    const auto result = static_cast<std::uint64_t>(info.exit.rval);
    const bool is_less =
        changed_->is_transfer ? result <= given_ : changed_->number == SYS_brk && result != asked_;
    is_carried_out_ |= is_less || info.exit.is_error != 0;
    changed_ = nullptr;
  }

  pid_t pid_;
  Order order_;
  long index_ = 1;  // the execve has happened
  long ordinal_ = 0;
  const Asking* changed_ = nullptr;
  std::uint64_t asked_ = 0;  // by the program
  std::uint64_t given_ = 0;  // to the kernel instead
  bool is_carried_out_ = false;
};

/// Gives the program's wait status.
int Supervise(pid_t pid, Tamperer& tamperer) {
  int status = 0;
  if (::waitpid(pid, &status, 0) < 0 || !WIFSTOPPED(status)) return status;
  if (::ptrace(PTRACE_SETOPTIONS, pid, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
    Fail("ptrace");

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
  if (std::strcmp(arguments[1], "refuse-memory") == 0 && count > 3) {
    order = {Order::Kind::RefuseMemory, nullptr, number(2), 0};
    return 3;
  }
  if (std::strcmp(arguments[1], "kill-before") == 0 && count > 3) {
    order = {Order::Kind::KillBefore, nullptr, number(2), 0};
    return 3;
  }
  if (std::strcmp(arguments[1], "kill-after") == 0 && count > 3) {
    order = {Order::Kind::KillAfter, nullptr, number(2), 0};
    return 3;
  }
  if (std::strcmp(arguments[1], "signal") == 0 && count > 4) {
    order = {Order::Kind::Signal, nullptr, number(2), static_cast<std::uint64_t>(number(3))};
    return 4;
  }
  if (std::strcmp(arguments[1], "limit") == 0 && count > 4) {
    for (const Resource& resource : kResources) {
      if (std::strcmp(arguments[2], resource.name) != 0) continue;
      order = {Order::Kind::Limit, nullptr, resource.number, static_cast<std::uint64_t>(number(3))};
      return 4;
    }
  }
  return 0;
}

[[noreturn]] void BecomeProgram(const Order& order, char* arguments[]) {
  if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) Fail("ptrace");
  if (order.kind == Order::Kind::Limit) {
    const rlimit limit{order.amount, order.amount};
    if (::setrlimit(static_cast<__rlimit_resource>(order.place), &limit) != 0) Fail("setrlimit");
  }
  ::execv(arguments[0], arguments);
  Fail(arguments[0]);
}

}  // namespace

int main(int count, char* arguments[]) {
  Order order{};
  const int taken = ParseOrder(count, arguments, order);
  if (taken == 0) {
    std::fputs(
        "usage: tamper shorten|shorten-from|refuse-memory|kill-before|kill-after|signal|limit ... "
        "PROGRAM...\n",
        stderr);
    return kNoTrial;
  }
  const pid_t pid = ::fork();
  if (pid < 0) Fail("fork");
  if (pid == 0) BecomeProgram(order, arguments + taken);
  Tamperer tamperer(pid, order);
  const int status = Supervise(pid, tamperer);
  if (order.kind == Order::Kind::Limit && !tamperer.IsCarriedOut()) return kNotStarted;
  if (WIFSIGNALED(status)) {
    std::signal(WTERMSIG(status), SIG_DFL);
    ::raise(WTERMSIG(status));
  }
  if (!tamperer.IsCarriedOut()) std::fputs("tamper: the order was not carried out\n", stderr);
  return tamperer.IsCarriedOut() && WIFEXITED(status) ? WEXITSTATUS(status) : kNoTrial;
}
