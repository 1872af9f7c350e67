#include "tests/support/failing_calls.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <thread>

struct uboot_ctx;

namespace testing_support {
namespace {

FailingCalls* current = nullptr;
std::thread::id current_thread;
thread_local std::string_view failing_start;

}  // namespace

FailingCalls::FailingCalls() {
  current = this;
  current_thread = std::this_thread::get_id();
}

FailingCalls::~FailingCalls() {
  current = nullptr;
}

FailingCalls* FailingCalls::Current() {
  // Other threads, such as the one that collects the log, go on undisturbed.
  return current_thread == std::this_thread::get_id() ? current : nullptr;
}

void FailingCalls::Fail(const std::string& name, int error, int nth, int times) {
  failures_[name] = {.error = error, .calls_before = nth - 1, .times = times};
}

void FailingCalls::WriteAtMost(std::size_t size) {
  largest_write_ = size;
}

std::vector<std::string> FailingCalls::Made(const std::vector<std::string>& names) const {
  std::vector<std::string> made;
  std::copy_if(made_.begin(), made_.end(), std::back_inserter(made), [&](const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  });
  return made;
}

bool FailingCalls::MustFail(const char* name) {
  if (busy_) return false;
  busy_ = true;
  made_.emplace_back(name);
  const auto found = failures_.find(name);
  bool fails = false;
  int error = 0;
  if (found != failures_.end()) {
    Failure& failure = found->second;
    if (failure.calls_before > 0) {
      --failure.calls_before;
    } else if (failure.times > 0) {
      --failure.times;
      fails = true;
      error = failure.error;
    }
  }
  busy_ = false;
  if (fails && error != 0) errno = error;
  return fails;
}

FailingFormat::FailingFormat(std::string_view start) {
  failing_start = start;
}

FailingFormat::~FailingFormat() {
  failing_start = {};
}

}  // namespace testing_support

namespace {

bool Fails(const char* name) {
  testing_support::FailingCalls* const calls = testing_support::FailingCalls::Current();
  return calls != nullptr && calls->MustFail(name);
}

bool FormatFails(const char* format) {
  using testing_support::failing_start;
  if (failing_start.empty() || !std::string_view(format).starts_with(failing_start))
    return Fails("vsnprintf");
  errno = EILSEQ;
  return true;
}

}  // namespace

// The linker turns a call of `name` into one of `__wrap_name`, and `__real_name` is the call itself.
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wreserved-identifier"
extern "C" {

int __real_vsnprintf(char* text, std::size_t size, const char* format, std::va_list arguments);
int __wrap_vsnprintf(char* text, std::size_t size, const char* format, std::va_list arguments) {
  return FormatFails(format) ? -1 : __real_vsnprintf(text, size, format, arguments);
}

int __real___vsnprintf_chk(char* text, std::size_t size, int flag, std::size_t room, const char* format,
                           std::va_list arguments);
int __wrap___vsnprintf_chk(char* text, std::size_t size, int flag, std::size_t room, const char* format,
                           std::va_list arguments) {
  return FormatFails(format) ? -1 : __real___vsnprintf_chk(text, size, flag, room, format, arguments);
}

ssize_t __real_read(int file, void* bytes, std::size_t size);
ssize_t __wrap_read(int file, void* bytes, std::size_t size) {
  return Fails("read") ? -1 : __real_read(file, bytes, size);
}

ssize_t __real___read_chk(int file, void* bytes, std::size_t size, std::size_t room);
ssize_t __wrap___read_chk(int file, void* bytes, std::size_t size, std::size_t room) {
  return Fails("read") ? -1 : __real___read_chk(file, bytes, size, room);
}

int __real_fstat(int file, struct stat* status);
int __wrap_fstat(int file, struct stat* status) {
  return Fails("fstat") ? -1 : __real_fstat(file, status);
}

ssize_t __real_write(int file, const void* bytes, std::size_t size);
ssize_t __wrap_write(int file, const void* bytes, std::size_t size) {
  if (Fails("write")) return -1;
  const testing_support::FailingCalls* const calls = testing_support::FailingCalls::Current();
  return __real_write(file, bytes, calls == nullptr ? size : std::min(size, calls->LargestWrite()));
}

int __real_fsync(int file);
int __wrap_fsync(int file) {
  struct stat status {};
  const bool is_folder = ::__real_fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
  return Fails(is_folder ? "fsync folder" : "fsync") ? -1 : __real_fsync(file);
}

int __real_fchmod(int file, mode_t mode);
int __wrap_fchmod(int file, mode_t mode) {
  return Fails("fchmod") ? -1 : __real_fchmod(file, mode);
}

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Fails("open") ? -1 : __real_open(path, flags, mode);
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  return Fails("unlink") ? -1 : __real_unlink(path);
}

int __real_rename(const char* old_path, const char* new_path);
int __wrap_rename(const char* old_path, const char* new_path) {
  return Fails("rename") ? -1 : __real_rename(old_path, new_path);
}

int __real_close(int file);
int __wrap_close(int file) {
  if (!Fails("close")) return __real_close(file);
  // The kernel lets go of the descriptor even when it reports an error.
  const int error = errno;
  __real_close(file);
  errno = error;
  return -1;
}

int __real_timer_create(clockid_t clock, sigevent* event, timer_t* timer);
int __wrap_timer_create(clockid_t clock, sigevent* event, timer_t* timer) {
  return Fails("timer_create") ? -1 : __real_timer_create(clock, event, timer);
}

int __real_timer_settime(timer_t timer, int flags, const itimerspec* times, itimerspec* earlier);
int __wrap_timer_settime(timer_t timer, int flags, const itimerspec* times, itimerspec* earlier) {
  return Fails("timer_settime") ? -1 : __real_timer_settime(timer, flags, times, earlier);
}

int __real_timer_delete(timer_t timer);
int __wrap_timer_delete(timer_t timer) {
  return Fails("timer_delete") ? -1 : __real_timer_delete(timer);
}

ssize_t __real_sendto(int socket, const void* data, std::size_t size, int flags, const sockaddr* to,
                      socklen_t length);
ssize_t __wrap_sendto(int socket, const void* data, std::size_t size, int flags, const sockaddr* to,
                      socklen_t length) {
  return Fails("sendto") ? -1 : __real_sendto(socket, data, size, flags, to, length);
}

int __real_setsockopt(int socket, int level, int name, const void* value, socklen_t size);
int __wrap_setsockopt(int socket, int level, int name, const void* value, socklen_t size) {
  return Fails("setsockopt") ? -1 : __real_setsockopt(socket, level, name, value, size);
}

int __real_sodium_init();
int __wrap_sodium_init() {
  return Fails("sodium_init") ? -1 : __real_sodium_init();
}

int __real_libuboot_initialize(uboot_ctx** context, void* devices);
int __wrap_libuboot_initialize(uboot_ctx** context, void* devices) {
  return Fails("libuboot_initialize") ? -1 : __real_libuboot_initialize(context, devices);
}

int __real_libuboot_open(uboot_ctx* context);
int __wrap_libuboot_open(uboot_ctx* context) {
  return Fails("libuboot_open") ? -1 : __real_libuboot_open(context);
}

}  // extern "C"
