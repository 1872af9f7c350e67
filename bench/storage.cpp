#include "bench/storage.h"

#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstdlib>

#include "bench/contestant.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* kVariable = "TMPDIR";  // the lab makes its devices there

bool IsInMemory(const fs::path& folder) {
  struct statfs status {};
  if (::statfs(folder.c_str(), &status) != 0) return false;
  return status.f_type == TMPFS_MAGIC || status.f_type == RAMFS_MAGIC;
}

template <typename Wanted>
std::optional<fs::path> FindFolder(Wanted wanted) {
  for (const fs::path& folder : {fs::temp_directory_path(), fs::path("/dev/shm"), ProgramFolder()}) {
    if (wanted(folder) && ::access(folder.c_str(), W_OK) == 0) return folder;
  }
  return std::nullopt;
}

}  // namespace

Storage::Storage(const fs::path& folder) {
  if (const char* former = std::getenv(kVariable)) former_ = former;
  ::setenv(kVariable, folder.c_str(), 1);
}

Storage::~Storage() {
  if (former_) {
    ::setenv(kVariable, former_->c_str(), 1);
  } else {
    ::unsetenv(kVariable);
  }
}

std::optional<fs::path> FolderInMemory() {
  return FindFolder(IsInMemory);
}

std::optional<fs::path> FolderOnDisk() {
  return FindFolder([](const fs::path& folder) { return !IsInMemory(folder); });
}

}  // namespace bench
