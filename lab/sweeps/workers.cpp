#include "lab/sweeps/workers.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>

namespace lab::sweeps {
namespace {

/// The next piece of work, shared by all workers.
class SharedCounter {
 public:
  SharedCounter() {
    void* const memory =
        // cppcheck-suppress invalidFunctionArg ; no file stands behind anonymous memory
        ::mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    counter_ = new (memory) Counter(0);
  }
  SharedCounter(const SharedCounter&) = delete;
  SharedCounter& operator=(const SharedCounter&) = delete;
  ~SharedCounter() { ::munmap(counter_, sizeof(Counter)); }

  std::size_t Take() { return counter_->fetch_add(1); }

 private:
  using Counter = std::atomic<std::size_t>;
  static_assert(Counter::is_always_lock_free);
  Counter* counter_;
};

struct Header {
  std::uint64_t piece;
  std::uint64_t size;
};

void SendAll(int pipe, const void* data, std::size_t size) {
  const char* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t sent = ::write(pipe, bytes, size);
    if (sent < 0) throw std::system_error(errno, std::generic_category(), "pipe");
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

[[noreturn]] void Work(std::size_t count, SharedCounter& next, int pipe,
                       const std::function<std::string(std::size_t)>& work) {
  try {
    for (std::size_t piece = next.Take(); piece < count; piece = next.Take()) {
      const std::string result = work(piece);
      const Header header{piece, result.size()};
      SendAll(pipe, &header, sizeof header);
      SendAll(pipe, result.data(), result.size());
    }
    ::_exit(0);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "worker: %s\n", error.what());
    ::_exit(1);
  }
}

struct Worker {
  pid_t pid;
  int pipe;
  std::string received;

  /// Takes the whole messages out of what was received.
  void Deliver(std::vector<std::string>& results, std::vector<bool>& done) {
    std::size_t place = 0;
    Header header{};
    while (received.size() - place >= sizeof header) {
      received.copy(reinterpret_cast<char*>(&header), sizeof header, place);
      if (received.size() - place - sizeof header < header.size) break;
      results.at(header.piece) = received.substr(place + sizeof header, header.size);
      done.at(header.piece) = true;
      place += sizeof header + header.size;
    }
    received.erase(0, place);
  }
};

Worker Start(std::size_t count, SharedCounter& next, const std::function<std::string(std::size_t)>& work) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  std::fflush(nullptr);
  const pid_t pid = ::fork();
  if (pid < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (pid == 0) {
    ::close(ends[0]);
    Work(count, next, ends[1], work);
  }
  ::close(ends[1]);
  return {pid, ends[0], {}};
}

}  // namespace

std::vector<std::string> DoInWorkers(std::size_t count, unsigned workers,
                                     const std::function<std::string(std::size_t)>& work) {
  SharedCounter next;
  std::vector<Worker> running;
  running.reserve(std::max(workers, 1U));
  for (unsigned i = 0; i < std::max(workers, 1U); ++i) running.push_back(Start(count, next, work));

  std::vector<std::string> results(count);
  std::vector<bool> done(count);
  std::vector<pollfd> pipes;
  pipes.reserve(running.size());
  for (const Worker& worker : running) pipes.push_back({worker.pipe, POLLIN, 0});
  std::size_t open = pipes.size();
  std::array<char, 65536> buffer{};
  while (open > 0) {
    ::poll(pipes.data(), pipes.size(), -1);
    for (std::size_t i = 0; i < pipes.size(); ++i) {
      if (pipes[i].fd < 0 || pipes[i].revents == 0) continue;
      const ssize_t got = ::read(pipes[i].fd, buffer.data(), buffer.size());
      if (got > 0) {
        running[i].received.append(buffer.data(), static_cast<std::size_t>(got));
        running[i].Deliver(results, done);
      } else {
        ::close(pipes[i].fd);
        pipes[i].fd = -1;
        --open;
      }
    }
  }
  for (const Worker& worker : running) ::waitpid(worker.pid, nullptr, 0);
  if (std::find(done.begin(), done.end(), false) != done.end()) {
    throw std::runtime_error("a worker ended before its work was done");
  }
  return results;
}

}  // namespace lab::sweeps
