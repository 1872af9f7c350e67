#include "base/durable_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/file_descriptor.h"

namespace KELP::Wifi {
namespace {

constexpr mode_t kOwnerOnly = 0600;

void ThrowUnless(bool succeeded, const char* action, const std::string& path) {
  if (succeeded) return;
  const int error = errno;
  throw std::system_error(error, std::generic_category(), std::string(action) + " " + path);
}

/// -1, with errno, when it cannot be opened.
FileDescriptor OpenDirectory(const std::string& path) {
  return FileDescriptor(
      RetryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

void Flush(const FileDescriptor& file, const std::string& path) {
  ThrowUnless(RetryInterrupted([&] { return ::fsync(file.Get()); }) == 0, "cannot flush", path);
}

/// A name in an open directory that is removed again unless it was given up.
class TemporaryName {
 public:
  TemporaryName(const FileDescriptor& directory, std::string name)
      : directory_(directory), name_(std::move(name)) {}
  TemporaryName(const TemporaryName&) = delete;
  TemporaryName& operator=(const TemporaryName&) = delete;
  ~TemporaryName() {
    if (!name_.empty()) ::unlinkat(directory_.Get(), name_.c_str(), 0);
  }

  const char* Get() const { return name_.c_str(); }
  void GiveUp() { name_.clear(); }

 private:
  const FileDescriptor& directory_;
  std::string name_;
};

FileDescriptor CreateExclusively(const FileDescriptor& directory, const char* name) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  return FileDescriptor(
      RetryInterrupted([&] { return ::openat(directory.Get(), name, kFlags, kOwnerOnly); }));
}

}  // namespace

void ReplaceFile(const std::string& path, std::string_view bytes) {
  const std::size_t slash = path.rfind('/');
  const std::string target = path.substr(slash + 1);
  // Opened before anything is written: once the rename is done nothing but its flush may still fail.
  const FileDescriptor directory = OpenDirectory(path.substr(0, slash + 1));
  ThrowUnless(directory.IsOpen(), "cannot open the directory of", path);

  std::string name = target + ".new";
  FileDescriptor file = CreateExclusively(directory, name.c_str());
  if (!file.IsOpen() && errno == EEXIST) {
    ThrowUnless(::unlinkat(directory.Get(), name.c_str(), 0) == 0, "cannot remove the leftover beside", path);
    file = CreateExclusively(directory, name.c_str());
  }
  ThrowUnless(file.IsOpen(), "cannot create", path);

  TemporaryName temporary(directory, std::move(name));
  ThrowUnless(::fchmod(file.Get(), kOwnerOnly) == 0, "cannot set the mode of", path);
  ThrowUnless(WriteAll(file.Get(), bytes.data(), bytes.size()), "cannot write", path);
  Flush(file, path);
  ThrowUnless(file.Close(), "cannot write", path);
  ThrowUnless(::renameat(directory.Get(), temporary.Get(), directory.Get(), target.c_str()) == 0,
              "cannot replace", path);
  temporary.GiveUp();
  Flush(directory, path);
}

void FlushDirectory(const std::string& path) {
  const FileDescriptor directory = OpenDirectory(path);
  ThrowUnless(directory.IsOpen(), "cannot open directory", path);
  Flush(directory, path);
}

}  // namespace KELP::Wifi
