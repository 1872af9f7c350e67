#include "lab/plain/guarded_files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "lab/images/private_root.h"
#include "lab/plain/lent_files.h"
#include "lab/plain/process_tree.h"

namespace lab {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMemory = "/dev/shm";
constexpr const char* kPrefix = "devicelab-guarded.";

/// What has to be free in memory: some devices with the libraries, and what a program may write there.
constexpr std::uintmax_t kRoomInMemory = std::uintmax_t{256} << 20;

/// So often a folder is made again that somebody else took for a leftover.
constexpr int kAttempts = 100;

/// A folder that is locked for as long as it is in use.
struct LockedFolder {
  std::string path;
  Descriptor lock;
};

bool HasRoomInMemory(const fs::path& folder) {
  struct statvfs status {};
  if (::access(folder.c_str(), W_OK) != 0 || ::statvfs(folder.c_str(), &status) != 0) return false;
  return std::uintmax_t{status.f_bavail} * status.f_frsize >= kRoomInMemory;
}

/// The folder to make it in.
fs::path ParentFor(Guarded content) {
  const bool runs_programs = content == Guarded::Roots;
  if (HasRoomInMemory(kMemory) && (!runs_programs || LetsProgramsRun(kMemory))) return kMemory;
  fs::path folder = fs::absolute(TemporaryFiles());
  if (!runs_programs || LetsProgramsRun(folder)) return folder;
  throw std::runtime_error(
      folder.native() + " lets no program run (it is mounted noexec): name a folder that does with TMPDIR");
}

/// Takes the lock of a folder of this user's that nobody else uses.
std::optional<Descriptor> TakeOver(const fs::path& path) {
  Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (!folder.IsOpen() || ::fstat(folder.Get(), &status) != 0) return std::nullopt;
  if (status.st_uid != ::geteuid() || status.st_nlink == 0) return std::nullopt;
  if (::flock(folder.Get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  // It may have been removed just before the lock was free.
  if (::fstat(folder.Get(), &status) != 0 || status.st_nlink == 0) return std::nullopt;
  return folder;
}

void Clear(const LockedFolder& folder) {
  // Something that was being started when it was looked for gets another chance.
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    KillThoseRootedBelow(folder.path.c_str());
    try {
      RemoveEntries(folder.lock.Get(), folder.path);
    } catch (const std::exception&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      continue;
    }
    if (::rmdir(folder.path.c_str()) == 0 || errno != ENOTEMPTY) return;
  }
}

void ClearLeftovers(const fs::path& parent) {
  std::error_code ignored;
  std::vector<fs::path> leftovers;
  for (const fs::directory_entry& entry : fs::directory_iterator(parent, ignored)) {
    if (entry.path().filename().native().starts_with(kPrefix)) leftovers.push_back(entry.path());
  }
  for (const fs::path& path : leftovers) {
    if (auto lock = TakeOver(path)) Clear({path.native(), std::move(*lock)});
  }
}

LockedFolder Make(const fs::path& parent) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::string path = (fs::canonical(parent) / kPrefix).native() + "XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) ThrowErrno("make a temporary folder in", parent.native());
    if (auto lock = TakeOver(path)) return {path, std::move(*lock)};
  }
  throw std::runtime_error("cannot keep a temporary folder in " + parent.native());
}

/// Waits for the end of the process open as `owner`, then clears up.
[[noreturn]] void Guard(const LockedFolder& folder, int owner) {
  ::setsid();
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  static_cast<void>(::chdir("/") == 0);
  const int kept = std::max(owner, folder.lock.Get());
  for (int descriptor = 0; descriptor < kept; ++descriptor) {
    if (descriptor != owner && descriptor != folder.lock.Get()) ::close(descriptor);
  }
  ::close_range(static_cast<unsigned>(kept) + 1, ~0U, 0);
  pollfd end{owner, POLLIN, 0};
  while (::poll(&end, 1, -1) < 0 && errno == EINTR) {
  }
  Clear(folder);
  ::_exit(0);
}

/// Clears up at this process's own end.
class Owner {
 public:
  explicit Owner(LockedFolder folder) : folder_(std::move(folder)) {}
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() {
    if (::getpid() == pid_) Clear(folder_);
  }

 private:
  LockedFolder folder_;
  pid_t pid_ = ::getpid();
};

}  // namespace

void GuardTemporaryFiles(Guarded content) {
  for (const fs::path& parent : {fs::path(kMemory), TemporaryFiles()}) ClearLeftovers(parent);
  LockedFolder folder = Make(ParentFor(content));
  const Descriptor owner(
      static_cast<int>(Checked(::syscall(SYS_pidfd_open, ::getpid(), 0), "watch", "this process")));
  if (Checked(::fork(), "fork", "") == 0) Guard(folder, owner.Get());
  Checked(::setenv("TMPDIR", folder.path.c_str(), 1), "set", "TMPDIR");
  static const Owner cleared_at_exit(std::move(folder));
}

}  // namespace lab
