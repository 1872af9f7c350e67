#include "lab/runs/in_root.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace lab {
namespace {

void Enter(const std::string& path) {
  Checked(::chroot(path.c_str()), "chroot to", path);
  Checked(::chdir("/"), "enter", path);
}

void Leave(const Descriptor& outer_root) {
  Checked(::fchdir(outer_root.Get()), "return to", "/");
  Checked(::chroot("."), "chroot to", "/");
}

/// Keeps this thread out of the handling of the process's signals.
void BlockSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace

InRoot::InRoot(PrivateRoot& root)
    : outer_root_(Checked(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC), "open", "/")),
      outer_folder_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)),  // fails where the user may not be
      wake_(Checked(::eventfd(0, EFD_CLOEXEC), "make", "an eventfd")),
      collector_(root),
      thread_([this](const std::stop_token& stop) { Collect(stop); }) {
  // Tests fork, and a thread that is still being started may hold locks that the child would then wait for.
  is_collecting_.acquire();
  ::closelog();  // syslog(3) would go on with the socket that it has
  Enter(root.Path().native());
}

InRoot::~InRoot() {
  ::closelog();
  try {
    Leave(outer_root_);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "cannot leave the private root: %s\n", error.what());
    std::abort();  // whatever came next would happen to the wrong files
  }
  if (outer_folder_.IsOpen()) static_cast<void>(::fchdir(outer_folder_.Get()) == 0);
}

std::vector<LogLine> InRoot::Log() {
  const std::lock_guard lock(collector_mutex_);
  return collector_.Take();
}

void InRoot::Collect(const std::stop_token& stop) {
  BlockSignals();
  const std::stop_callback wake(stop, [this] { ::eventfd_write(wake_.Get(), 1); });
  is_collecting_.release();
  std::array<pollfd, 2> sources{pollfd{collector_.Socket(), POLLIN, 0}, pollfd{wake_.Get(), POLLIN, 0}};
  while (!stop.stop_requested()) {
    ::poll(sources.data(), sources.size(), -1);
    // Taken off the socket and kept in one step, so that Log() misses nothing in between.
    const std::lock_guard lock(collector_mutex_);
    collector_.Drain();
  }
}

}  // namespace lab
