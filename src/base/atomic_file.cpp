#include "base/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/unique_fd.h"

namespace KELP::Wifi {
namespace {

constexpr mode_t kOwnerOnly = 0600;

void ThrowUnless(bool succeeded, const char* action, const std::string& path) {
  if (succeeded) return;
  const int error = errno;
  throw std::system_error(error, std::generic_category(), std::string(action) + " " + path);
}

int Flush(const UniqueFd& file) {
  return RetryInterrupted([&] { return ::fsync(file.Get()); });
}

/// A name that is removed again unless it was given up.
class TemporaryName {
 public:
  explicit TemporaryName(std::string name) : name_(std::move(name)) {}
  TemporaryName(const TemporaryName&) = delete;
  TemporaryName& operator=(const TemporaryName&) = delete;
  ~TemporaryName() {
    if (!name_.empty()) ::unlink(name_.c_str());
  }

  const char* Get() const { return name_.c_str(); }
  void GiveUp() { name_.clear(); }

 private:
  std::string name_;
};

UniqueFd CreateExclusively(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  return UniqueFd(RetryInterrupted([&] { return ::open(path.c_str(), kFlags, kOwnerOnly); }));
}

}  // namespace

void WriteFileAtomically(const std::string& path, std::string_view bytes) {
  std::string name = path + ".new";
  UniqueFd file = CreateExclusively(name);
  if (!file.IsOpen() && errno == EEXIST) {
    ThrowUnless(::unlink(name.c_str()) == 0, "cannot remove the leftover beside", path);
    file = CreateExclusively(name);
  }
  ThrowUnless(file.IsOpen(), "cannot create", path);

  TemporaryName temporary(std::move(name));
  ThrowUnless(::fchmod(file.Get(), kOwnerOnly) == 0, "cannot set the mode of", path);
  ThrowUnless(WriteAll(file.Get(), bytes.data(), bytes.size()), "cannot write", path);
  // Before the rename: its bytes must not come to the disk behind its name.
  ThrowUnless(Flush(file) == 0, "cannot flush", path);
  ThrowUnless(file.Close(), "cannot write", path);
  ThrowUnless(::rename(temporary.Get(), path.c_str()) == 0, "cannot replace", path);
  temporary.GiveUp();
}

void FlushDirectory(const std::string& path) {
  const UniqueFd directory(
      RetryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  ThrowUnless(directory.IsOpen(), "cannot open directory", path);
  const bool is_flushed = Flush(directory) == 0 || errno == EINVAL || errno == EOPNOTSUPP;
  ThrowUnless(is_flushed, "cannot flush directory", path);
}

}  // namespace KELP::Wifi
