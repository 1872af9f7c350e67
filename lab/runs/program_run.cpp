#include "lab/runs/program_run.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "lab/plain/lent_files.h"
#include "lab/plain/plain_way.h"
#include "lab/plain/process_tree.h"
#include "lab/runs/program_mounts.h"
#include "lab/runs/program_output.h"
#include "lab/runs/program_start.h"

namespace lab {
namespace {

/// Whether a child has ended; it stays what can be waited for.
bool HasEnded(pid_t child) {
  siginfo_t end{};
  return ::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT | WNOHANG) == 0 &&
         end.si_pid == child;
}

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
    if (IsPlainWay() && !HasEnded(pid)) KillTree(pid);
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

/// What the plain way cannot do.
void RequireNoMounts(const RunOptions& options) {
  if (options.with_proc) throw NeedsMounts("a /proc for the program");
  if (!options.tmpfs.empty()) throw NeedsMounts("a file system of the device's own");
  if (options.machine) throw NeedsMounts("a program of another machine");
}

/// What the plain way copies into the root. Of the host's programs a wrapper finds those that the options
/// name.
std::vector<LentFile> FilesToLend(const std::filesystem::path& program, const std::string& program_in_root,
                                  const std::vector<std::string>& command, const RunOptions& options) {
  std::vector<LentFile> files = FilesOfProgram(std::filesystem::absolute(program), program_in_root);
  const auto add = [&](const std::string& host_program) {
    for (LentFile& file : FilesOfProgram(host_program, host_program)) files.push_back(std::move(file));
  };
  // A wrapper may also be a file of the device's.
  if (!options.wrapper.empty() && std::filesystem::exists(command.front())) add(command.front());
  for (const std::string& host_program : options.host_programs) add(host_program);
  return files;
}

}  // namespace

RunResult RunProgram(PrivateRoot& root, const std::filesystem::path& program,
                     const std::vector<std::string>& arguments, const RunOptions& options) {
  Checked(::access(program.c_str(), X_OK), "run", program.native());
  if (IsPlainWay()) RequireNoMounts(options);
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
    std::optional<LentFiles> files;
    std::optional<Lent> lent;
    if (IsPlainWay()) {
      files.emplace(FilesToLend(program, program_in_root, command, options));
      lent.emplace(*files, root);
    }
    std::optional<LogCollector> log;
    if (options.collect_log) log.emplace(root);
    if (log && options.stuck_log) log->Fill();
    const Descriptor empty = AboveStandardStreams(
        Descriptor(Checked(::open("/dev/null", O_RDONLY | O_CLOEXEC), "open", "/dev/null")));
    ProgramOutput out(options.console);
    ProgramOutput err(options.console);
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

    const auto start = std::chrono::steady_clock::now();
    LogCollector* const drained = log && !options.stuck_log ? &*log : nullptr;
    result.timed_out = !DrainUntilEnd(process, out, err, drained, start + options.timeout);
    result.duration = TimeSince(start);
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
