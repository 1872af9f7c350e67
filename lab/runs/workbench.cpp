#include "lab/runs/workbench.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "lab/images/file_copy.h"
#include "lab/plain/lent_files.h"
#include "lab/plain/plain_way.h"
#include "lab/runs/log_collector.h"
#include "lab/runs/program_mounts.h"
#include "lab/runs/program_output.h"
#include "lab/runs/program_start.h"
#include "lab/runs/sealed_process.h"

namespace lab {
namespace {

/// A folder that every Linux has and that no image lies in.
constexpr const char* kPlace = "/sys";

/// Takes this process into the root open as `root` and, with the object, out of it again.
class Inside {
 public:
  Inside(const Descriptor& root, const Descriptor& outer_root)
      : outer_root_(outer_root),
        outer_folder_(Checked(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC), "open", ".")) {
    Checked(::fchdir(root.Get()), "enter", "the device");
    Checked(::chroot("."), "chroot to", "the device");
  }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  ~Inside() {
    const bool left =
        ::fchdir(outer_root_.Get()) == 0 && ::chroot(".") == 0 && ::fchdir(outer_folder_.Get()) == 0;
    if (!left) ::_exit(127);  // whatever came next would happen to the wrong files
  }

 private:
  const Descriptor& outer_root_;
  Descriptor outer_folder_;
};

/// What posix_spawn(3) is told: the streams, a process group, no signals handled, ignored or blocked.
class SpawnSettings {
 public:
  SpawnSettings(int standard_input, int standard_output, int standard_error) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawn_file_actions_adddup2(&actions_, standard_input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions_, standard_output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions_, standard_error, STDERR_FILENO);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    sigset_t signals;
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::posix_spawnattr_setflags(&attributes_,
                               POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  const posix_spawn_file_actions_t* Actions() const { return &actions_; }
  const posix_spawnattr_t* Attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

pid_t Spawn(const std::string& program, const std::vector<std::string>& arguments,
            const SpawnSettings& settings) {
  std::string name = program;
  std::vector<std::string> texts = arguments;
  std::vector<char*> pointers{name.data()};
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  std::string path = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
  const std::array<char*, 2> environment{path.data(), nullptr};
  pid_t pid = -1;
  const int error = ::posix_spawn(&pid, program.c_str(), settings.Actions(), settings.Attributes(),
                                  pointers.data(), environment.data());
  if (error != 0) throw std::system_error(error, std::generic_category(), "run " + program);
  return pid;
}

/// Removes what the folder open as `folder` holds but the fittings, and gives their folders their modes back.
/// Gives how many fittings are there, as they were made.
std::size_t RemoveAllBut(const Tree& fittings, int folder, const std::string& folder_path) {
  std::size_t found = 0;
  for (const std::string& name : Names(folder, folder_path)) {
    std::string path = folder_path;
    path.append("/").append(name);
    struct stat status {};
    Checked(::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW), "examine", path);
    const auto fitting = fittings.find(path);
    if (!S_ISDIR(status.st_mode)) {
      if (fitting != fittings.end() && ReadEntry(folder, name, path) == fitting->second) {
        ++found;
      } else {
        Checked(::unlinkat(folder, name.c_str(), 0), "remove", path);
      }
      continue;
    }
    const bool stays = fitting != fittings.end() && fitting->second.kind == Entry::Kind::Directory;
    const mode_t mode = stays ? fitting->second.mode : S_IRWXU;
    if ((status.st_mode & 07777U) != mode) {
      Checked(::fchmodat(folder, name.c_str(), mode, 0), "set the mode of", path);
    }
    const Descriptor inner = OpenAt(folder, name, O_RDONLY | O_DIRECTORY, path);
    if (stays) {
      found += 1 + RemoveAllBut(fittings, inner.Get(), path);
    } else {
      RemoveEntries(inner.Get(), path);
      Checked(::unlinkat(folder, name.c_str(), AT_REMOVEDIR), "remove", path);
    }
  }
  return found;
}

}  // namespace

Workbench::Workbench(const std::filesystem::path& program, std::uintmax_t size, Fittings fittings)
    : order_(fittings),
      program_(std::filesystem::absolute(program)),
      program_in_root_("/usr/sbin/" + program.filename().native()),
      outer_root_(Checked(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC), "open", "/")),
      empty_(AboveStandardStreams(
          Descriptor(Checked(::open("/dev/null", O_RDONLY | O_CLOEXEC), "open", "/dev/null")))) {
  if (IsPlainWay()) {
    if (kSanitizedBuild) throw NeedsMounts("a /proc for the program");
    copies_.emplace(FilesOfProgram(program_, program_in_root_));
    device_.emplace(PrivateRoot::Bare{});
    root_ = device_->Open("/", O_PATH | O_DIRECTORY);
  } else {
    root_ = MountTmpfsOver(kPlace, size);
    device_.emplace(WithoutMounts(root_));
  }
  if (fittings == Fittings::First) Fit();
}

Workbench::~Workbench() {
  device_.reset();
  if (IsPlainWay()) return;
  try {
    Unmount(kPlace);
  } catch (const std::exception&) {
    // It goes away with the process.
  }
}

RunResult Workbench::Run(const std::vector<std::string>& arguments, std::chrono::milliseconds limit) {
  if (!is_fitted_) Fit();
  RunResult result;
  result.before = device_->Snapshot();
  if (kSanitizedBuild) MountProc(root_.Get());
  {
    std::optional<Lent> lent;
    if (IsPlainWay()) lent.emplace(*copies_, *device_);
    LogCollector log(*device_);
    ProgramOutput out(Console::Collected);
    ProgramOutput err(Console::Collected);
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = -1;
    {
      const SpawnSettings settings(empty_.Get(), out.WritingEnd(), err.WritingEnd());
      const Inside inside(root_, outer_root_);
      pid = Spawn(program_in_root_, arguments, settings);
    }
    const Descriptor process(
        static_cast<int>(Checked(::syscall(SYS_pidfd_open, pid, 0), "watch", "the program")));
    out.CloseWritingEnd();
    err.CloseWritingEnd();
    result.timed_out = !DrainUntilEnd(process, out, err, &log, start + limit);
    result.duration = TimeSince(start);
    const int status = KillAll(pid);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    out.Drain();
    err.Drain();
    result.out = out.Take();
    result.err = err.Take();
    result.log = log.Take();
  }
  if (kSanitizedBuild) Unmount(std::string(kPlace) + "/proc");
  result.after = device_->Snapshot();
  return result;
}

bool Workbench::Clear() {
  // A mount may stand in a folder of the device's own, which could not be removed.
  if (order_ == Fittings::Last) return false;
  return RemoveAllBut(fittings_, device_->Directory(), "") == fittings_.size();
}

void Workbench::Fit() {
  device_->ProvideUsualDirectories();
  if (kSanitizedBuild) device_->ProvideDirectory("/proc");
  const std::vector<HostMount> mounts = PrepareHostMounts(*device_, program_, program_in_root_, "/", false);
  if (!IsPlainWay()) {
    for (const HostMount& mount : mounts) MountFromHost(root_.Get(), mount);
  }
  fittings_ = device_->Provided();
  is_fitted_ = true;
}

}  // namespace lab
