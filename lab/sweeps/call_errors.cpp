#include "lab/sweeps/call_errors.h"

#include <cstring>
#include <initializer_list>
#include <map>
#include <stdexcept>

namespace lab::sweeps {
namespace {

using Errors = std::vector<std::string_view>;

constexpr int kMoreThanErrorsThereAre = 200;

/// The errors of a way to a file, with others.
Errors OnAWay(std::initializer_list<std::string_view> others) {
  Errors errors{"EACCES", "EIO", "ELOOP", "ENAMETOOLONG", "ENOENT", "ENOMEM", "ENOTDIR", "ESTALE"};
  errors.insert(errors.end(), others);
  return errors;
}

std::map<std::string_view, Errors> AllErrors() {
  const Errors none;
  const Errors status = OnAWay({});
  const Errors open = OnAWay({"EAGAIN", "EINTR", "EMFILE", "ENFILE", "EPERM"});
  const Errors rename =
      OnAWay({"EBUSY", "EDQUOT", "EISDIR", "EMLINK", "ENOSPC", "ENOTEMPTY", "EPERM", "EROFS", "EXDEV"});
  // Not ENOENT: a file that is gone already is no failure, and here it would not be gone. Nor EISDIR, which
  // the C library answers by removing a folder.
  const Errors unlink{"EACCES", "EBUSY",   "EIO",   "ELOOP", "ENAMETOOLONG",
                      "ENOMEM", "ENOTDIR", "EPERM", "EROFS", "ESTALE"};
  const Errors make = OnAWay({"EDQUOT", "EMLINK", "ENOSPC", "EPERM", "EROFS"});
  const Errors flush{"EDQUOT", "EINTR", "EINVAL", "EIO", "ENOSPC", "EOPNOTSUPP", "EROFS"};
  const Errors read{"EAGAIN", "EINTR", "EIO", "EISDIR", "ENOMEM", "ESTALE"};
  const Errors write{"EAGAIN", "EDQUOT", "EFBIG", "EINTR", "EIO", "ENOMEM", "ENOSPC", "EPERM", "ESTALE"};
  const Errors send{"EAGAIN",  "ECONNREFUSED", "ECONNRESET", "EINTR", "EMSGSIZE",
                    "ENOBUFS", "ENOMEM",       "ENOTCONN",   "EPIPE"};
  const Errors wait{"EINTR", "EINVAL", "ENOMEM"};
  const Errors memory{"ENOMEM"};
  return {
      {"access", status},
      {"brk", none},  // has no error: a refused growth leaves the break where it was
      {"clock_gettime", none},
      {"clock_nanosleep", {"EINTR"}},
      {"close", {"EDQUOT", "EINTR", "EIO", "ENOSPC"}},
      {"connect", {"EACCES", "EAGAIN", "ECONNREFUSED", "EINTR", "ELOOP", "ENOENT", "ENOTDIR", "EPROTOTYPE"}},
      {"exit_group", none},
      {"faccessat2", status},
      {"fchmod", {"EIO", "ENOMEM", "EPERM", "EROFS", "ESTALE"}},
      {"fcntl", {"EACCES", "EAGAIN", "EINTR", "ENOLCK"}},
      {"fdatasync", flush},
      {"flock", {"EAGAIN", "EINTR", "ENOLCK"}},
      {"fstat", {"EIO", "ENOMEM", "ESTALE"}},
      {"fsync", flush},
      {"futex", none},  // nobody is waiting: nothing is waited for
      {"getpid", none},
      {"getrandom", {"EAGAIN", "EINTR", "ENOSYS"}},
      {"gettid", none},
      {"ioctl", {"EINVAL", "EIO", "ENOTTY", "EPERM"}},
      {"lseek", {"EINVAL", "EIO", "ESPIPE"}},
      {"lstat", status},
      {"madvise", memory},
      {"mkdir", make},
      {"mkdirat", make},
      {"mmap", memory},
      {"mprotect", memory},
      {"mremap", memory},
      {"munmap", memory},
      {"nanosleep", {"EINTR"}},
      {"newfstatat", status},
      {"open", open},
      {"openat", open},
      {"poll", wait},
      {"ppoll", wait},
      {"pread64", read},
      {"pwrite64", write},
      {"read", read},
      {"readlink", status},
      {"readlinkat", status},
      {"rename", rename},
      {"renameat", rename},
      {"renameat2", rename},
      {"rmdir", {"EACCES", "EBUSY", "EIO", "ENOTEMPTY", "EPERM", "EROFS"}},
      {"rt_sigaction", {"EINVAL"}},
      {"rt_sigprocmask", {"EINVAL"}},
      {"sendmsg", send},
      {"sendto", send},
      {"setsockopt", {"ENOBUFS", "ENOMEM"}},
      {"socket", {"EACCES", "EAFNOSUPPORT", "EMFILE", "ENFILE", "ENOBUFS", "ENOMEM"}},
      {"stat", status},
      {"statx", status},
      {"sysinfo", none},
      {"timer_create", {"EAGAIN", "ENOMEM"}},
      {"timer_delete", {"EINVAL"}},
      {"timer_settime", {"EINVAL"}},
      {"umask", none},
      {"uname", none},
      {"unlink", unlink},
      {"unlinkat", unlink},
      {"write", write},
  };
}

}  // namespace

const std::vector<std::string_view>& ErrorsOf(std::string_view call) {
  static const std::map<std::string_view, Errors> all = AllErrors();
  const auto known = all.find(call);
  if (known == all.end()) {
    throw std::runtime_error("it is not known how " + std::string(call) + " can fail: add it to the plan");
  }
  return known->second;
}

const std::vector<std::string_view>& ErrorsOfCreation() {
  static const Errors errors{"EDQUOT", "ENOSPC", "EROFS"};
  return errors;
}

bool IsInterruption(std::string_view error) {
  return error == "EINTR";
}

bool MeansAbsent(std::string_view error) {
  return error == "ENOENT" || error == "ENOTDIR";
}

std::string TextOfError(std::string_view name) {
  for (int number = 1; number < kMoreThanErrorsThereAre; ++number) {
    const char* const candidate = ::strerrorname_np(number);
    if (candidate != nullptr && name == candidate) return ::strerrordesc_np(number);
  }
  return {};
}

}  // namespace lab::sweeps
