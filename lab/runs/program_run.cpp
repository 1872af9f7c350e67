#include "lab/runs/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <optional>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "lab/runs/program_mounts.h"
#include "lab/runs/program_start.h"

namespace lab {
namespace {

using Clock = std::chrono::steady_clock;

/// Writes into a pipe until it takes no more.
void Fill(const Descriptor& pipe) {
  const std::array<char, PIPE_BUF> piece{};
  Checked(::fcntl(pipe.Get(), F_SETFL, O_NONBLOCK), "arrange", "a pipe");
  while (::write(pipe.Get(), piece.data(), piece.size()) > 0) {
  }
  Checked(::fcntl(pipe.Get(), F_SETFL, 0), "arrange", "a pipe");
}

/// A stream of the program's that is kept as text.
class Output {
 public:
  explicit Output(Console console) {
    std::array<int, 2> ends{};
    Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
    Descriptor reading(ends[0]);
    writing_ = AboveStandardStreams(Descriptor(ends[1]));
    if (console == Console::Full) {
      Fill(writing_);
      unread_ = std::move(reading);
    } else if (console != Console::Broken) {
      reading_ = std::move(reading);
      Checked(::fcntl(reading_.Get(), F_SETFL, O_NONBLOCK), "arrange", "a pipe");
    }
  }

  int WritingEnd() const { return writing_.Get(); }
  void CloseWritingEnd() { writing_.Close(); }
  /// -1 once nothing more can come, and where nobody reads.
  int ReadingEnd() const { return reading_.Get(); }

  /// Takes in all that waits, without blocking.
  void Drain() {
    std::array<char, 64 * 1024> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    while (reading_.IsOpen()) {
      const ssize_t taken = ::read(reading_.Get(), piece.data(), piece.size());
      if (taken > 0) {
        text_.append(piece.data(), static_cast<std::size_t>(taken));
      } else if (taken == 0) {
        reading_.Close();
      } else if (errno == EAGAIN) {
        return;
      } else if (errno != EINTR) {
        ThrowErrno("read", "what the program prints");
      }
    }
  }

  std::string Take() { return std::move(text_); }

 private:
  Descriptor reading_;
  Descriptor unread_;  // held open
  Descriptor writing_;
  std::string text_;
};

/// A child process and its process group. Both end with the object, if not before.
class Child {
 public:
  explicit Child(pid_t pid) : pid_(pid) {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (pid_ > 0) End();
  }

  pid_t Pid() const { return pid_; }

  /// Kills what is left of the group, and gives the child's status as waitpid(2) does.
  int End() {
    const pid_t pid = std::exchange(pid_, -1);
    ::kill(-pid, SIGKILL);
    ::kill(pid, SIGKILL);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
  }

 private:
  pid_t pid_;
};

/// Drains all that the program sends until it ends or the deadline passes. Gives whether it ended.
bool DrainUntilEnd(const Descriptor& process, Output& out, Output& err, LogCollector* log,
                   Clock::time_point deadline) {
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    std::array<pollfd, 4> sources{pollfd{process.Get(), POLLIN, 0}, pollfd{out.ReadingEnd(), POLLIN, 0},
                                  pollfd{err.ReadingEnd(), POLLIN, 0},
                                  pollfd{log != nullptr ? log->Socket() : -1, POLLIN, 0}};
    ::poll(sources.data(), sources.size(), static_cast<int>(std::min<std::int64_t>(left, INT_MAX)));
    if (sources[0].revents != 0) return true;
    out.Drain();
    err.Drain();
    if (log != nullptr) log->Drain();
  }
}

/// Puts what an own file system holds into the folder at which it was mounted.
void KeepFileSystem(const PrivateRoot& root, const std::string& device_path, const Descriptor& file_system) {
  const Descriptor folder = root.Open(device_path, O_RDONLY | O_DIRECTORY);
  RemoveEntries(folder.Get(), device_path);
  CopyEntries(file_system.Get(), folder.Get(), device_path);
  struct stat status {};
  Checked(::fstat(file_system.Get(), &status), "examine", device_path);
  Checked(::fchmod(folder.Get(), status.st_mode & 07777U), "set the mode of", device_path);
}

std::vector<std::string> FullCommand(const std::vector<std::string>& wrapper, const std::string& program,
                                     const std::vector<std::string>& arguments) {
  std::vector<std::string> command = wrapper;
  command.push_back(program);
  command.insert(command.end(), arguments.begin(), arguments.end());
  if (command.front().find('/') == std::string::npos) command.front().insert(0, "/usr/bin/");
  return command;
}

}  // namespace

RunResult RunProgram(PrivateRoot& root, const std::filesystem::path& program,
                     const std::vector<std::string>& arguments, const RunOptions& options) {
  Checked(::access(program.c_str(), X_OK), "run", program.native());
  const std::string program_in_root = "/usr/sbin/" + program.filename().native();
  std::vector<std::string> wrapper = options.wrapper;
  if (options.with_proc) root.ProvideDirectory("/proc");
  std::vector<HostMount> mounts =
      PrepareHostMounts(root, std::filesystem::absolute(program), program_in_root,
                        options.machine ? options.machine->libraries : "/", !options.wrapper.empty());
  if (options.machine) {
    if (!wrapper.empty()) throw std::runtime_error("no wrapper can look into a program of another machine");
    const std::filesystem::path& emulator = options.machine->emulator;
    wrapper.push_back("/usr/sbin/" + emulator.filename().native());
    mounts.push_back(PrepareProgramMount(root, emulator, wrapper.front()));
  }
  const std::vector<std::string> command = FullCommand(wrapper, program_in_root, arguments);

  RunResult result;
  result.before = root.Snapshot();
  {
    std::optional<LogCollector> log;
    if (options.collect_log) log.emplace(root);
    if (log && options.stuck_log) log->Fill();
    const Descriptor empty = AboveStandardStreams(
        Descriptor(Checked(::open("/dev/null", O_RDONLY | O_CLOEXEC), "open", "/dev/null")));
    Output out(options.console);
    Output err(options.console);
    StartReport report;

    const pid_t starter = ::getpid();
    Child child(Checked(::fork(), "fork", ""));
    if (child.Pid() == 0) {
      BecomeProgram({root, options, mounts, command, empty.Get(), out.WritingEnd(), err.WritingEnd(),
                     report.starting.Get(), starter});
    }
    const Descriptor process(
        static_cast<int>(Checked(::syscall(SYS_pidfd_open, child.Pid(), 0), "watch", "the program")));
    out.CloseWritingEnd();
    err.CloseWritingEnd();
    report.starting.Close();
    const auto file_systems = AwaitStart(report.waiting);

    LogCollector* const drained = log && !options.stuck_log ? &*log : nullptr;
    result.timed_out = !DrainUntilEnd(process, out, err, drained, Clock::now() + options.timeout);
    const int status = child.End();
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    out.Drain();
    err.Drain();
    result.out = out.Take();
    result.err = err.Take();
    if (drained != nullptr) result.log = drained->Take();
    for (const auto& [path, file_system] : file_systems) KeepFileSystem(root, path, file_system);
  }
  result.after = root.Snapshot();
  return result;
}

}  // namespace lab
