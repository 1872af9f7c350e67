#include "lab/sweeps/file_operations.h"

#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>

#include "lab/sweeps/descriptor_table.h"

namespace lab::sweeps {
namespace {

using Kind = FileOperation::Kind;

constexpr int kOctal = 8;

unsigned ModeAt(const SystemCall& call, std::size_t place) {
  if (place >= call.arguments.size()) return 0;
  return static_cast<unsigned>(std::strtoul(call.arguments[place].c_str(), nullptr, kOctal));
}

/// Of the calls that the model does not follow: all but those known to leave files alone, so that a new one
/// is noticed.
bool MayChangeStorage(const SystemCall& call) {
  static const std::set<std::string_view> harmless{
      "access",          "arch_prctl",   "brk",          "clock_gettime",
      "clock_nanosleep", "close",        "connect",      "execve",
      "exit_group",      "faccessat2",   "flock",        "fstat",
      "futex",           "getpid",       "getrandom",    "getrlimit",
      "gettid",          "getuid",       "lseek",        "lstat",
      "madvise",         "mprotect",     "mremap",       "munmap",
      "nanosleep",       "newfstatat",   "poll",         "ppoll",
      "pread64",         "prlimit64",    "read",         "readlink",
      "readlinkat",      "rseq",         "rt_sigaction", "rt_sigprocmask",
      "sendmsg",         "sendto",       "setsockopt",   "set_robust_list",
      "set_tid_address", "socket",       "stat",         "statx",
      "sysinfo",         "timer_create", "timer_delete", "timer_settime",
      "umask",           "uname",
  };
  const auto has = [&](std::size_t place, std::string_view text) {
    return place < call.arguments.size() && call.arguments[place].find(text) != std::string::npos;
  };
  if (call.name == "mmap") return has(2, "PROT_WRITE") && has(3, "MAP_SHARED");
  if (call.name == "fcntl") return has(1, "F_DUPFD");  // a descriptor that is not followed
  if (call.name == "ioctl") return has(1, "FICLONE") || has(1, "FS_IOC");
  return !harmless.contains(call.name);
}

class Extraction {
 public:
  void Take(const SystemCall& call) {
    if (!call.error.empty()) return;
    if (call.name == "open" || call.name == "openat") {
      TakeOpen(call);
    } else if (call.name == "write") {
      TakeWrite(call);
    } else if (call.name == "fsync" || call.name == "fdatasync") {
      TakeFlush(call);
    } else if (call.name == "rename") {
      AddRename(descriptors_.PathAt(call, 0, std::nullopt), descriptors_.PathAt(call, 1, std::nullopt));
    } else if (call.name == "renameat" || call.name == "renameat2") {
      AddRename(descriptors_.PathAt(call, 1, 0), descriptors_.PathAt(call, 3, 2));
    } else if (call.name == "unlink") {
      Add(Kind::Remove).path = descriptors_.PathAt(call, 0, std::nullopt);
    } else if (call.name == "unlinkat") {
      Add(Kind::Remove).path = descriptors_.PathAt(call, 1, 0);
    } else if (call.name == "mkdir" || call.name == "mkdirat") {
      const bool is_relative = call.name == "mkdirat";
      FileOperation& operation = Add(Kind::MakeDirectory);
      operation.path =
          is_relative ? descriptors_.PathAt(call, 1, 0) : descriptors_.PathAt(call, 0, std::nullopt);
      operation.mode = ModeAt(call, is_relative ? 2 : 1);
    } else if (call.name == "fchmod") {
      RequireSameMode(call);
    } else if (MayChangeStorage(call)) {
      throw std::runtime_error("the model of storage does not know what " + call.name + " changes");
    }
    descriptors_.Follow(call);
  }

  std::vector<FileOperation> Finish() { return std::move(operations_); }

 private:
  FileOperation& Add(Kind kind) {
    operations_.push_back({});
    operations_.back().kind = kind;
    return operations_.back();
  }

  void AddRename(std::string from, std::string to) {
    FileOperation& operation = Add(Kind::Rename);
    operation.path = std::move(from);
    operation.target = std::move(to);
  }

  void TakeOpen(const SystemCall& call) {
    const std::optional<OpenedFile> file = descriptors_.OpenedBy(call);
    const bool writes = file->Has("O_WRONLY") || file->Has("O_RDWR");
    open_for_writing_.erase(call.result);
    modes_.erase(call.result);
    if (!writes || file->path == "/dev/null") return;
    open_for_writing_[call.result] = ++openings_;
    FileOperation& operation = Add(Kind::Open);
    operation.path = file->path;
    operation.opened = openings_;
    operation.truncates = file->Has("O_TRUNC");
    operation.mode = ModeAt(call, call.name == "openat" ? 3 : 2);
    modes_[call.result] = operation.mode;
  }

  /// The model gives a file the mode that it was made with.
  void RequireSameMode(const SystemCall& call) const {
    const auto made = modes_.find(std::strtol(call.arguments.at(0).c_str(), nullptr, 10));
    if (made == modes_.end() || made->second != ModeAt(call, 1)) {
      throw std::runtime_error("the model of storage does not know a change of mode");
    }
  }

  void TakeWrite(const SystemCall& call) {
    const auto opened = FindOpening(call);
    if (opened == open_for_writing_.end()) {
      RequireStandardStream(call.arguments.at(0));
      return;
    }
    FileOperation& operation = Add(Kind::Write);
    operation.opened = opened->second;
    operation.bytes = QuotedBytes(call.arguments.at(1)).substr(0, static_cast<std::size_t>(call.result));
  }

  static void RequireStandardStream(const std::string& descriptor) {
    if (descriptor == "1" || descriptor == "2") return;
    throw std::runtime_error("a write to a file that was not seen to be opened");
  }

  void TakeFlush(const SystemCall& call) {
    const OpenedFile* const file = descriptors_.UsedBy(call);
    if (file == nullptr) throw std::runtime_error("a flush of a file that was not seen to be opened");
    const auto opened = FindOpening(call);
    if (opened == open_for_writing_.end()) {
      Add(Kind::FlushDirectory).path = file->path;
    } else {
      FileOperation& operation = Add(Kind::FlushFile);
      operation.path = file->path;
      operation.opened = opened->second;
    }
  }

  std::map<std::int64_t, std::size_t>::const_iterator FindOpening(const SystemCall& call) const {
    const OpenedFile* const file = descriptors_.UsedBy(call);
    if (file == nullptr) return open_for_writing_.end();
    return open_for_writing_.find(std::strtol(call.arguments.at(0).c_str(), nullptr, 10));
  }

  DescriptorTable descriptors_;
  std::map<std::int64_t, std::size_t> open_for_writing_;  // descriptor to opening
  std::map<std::int64_t, unsigned> modes_;                // descriptor to the mode it was made with
  std::size_t openings_ = 0;
  std::vector<FileOperation> operations_;
};

}  // namespace

std::vector<FileOperation> ExtractFileOperations(const std::vector<SystemCall>& calls) {
  Extraction extraction;
  for (const SystemCall& call : calls) extraction.Take(call);
  return extraction.Finish();
}

}  // namespace lab::sweeps
