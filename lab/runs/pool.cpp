#include "lab/runs/pool.h"

#include <poll.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "lab/runs/pool_worker.h"

namespace lab {
namespace {

using State = PoolTasks::State;

constexpr int kTickMilliseconds = 500;

/// So many failures in a row tell of the host.
constexpr int kMaxFailuresInARow = 5;

/// A descriptor that becomes readable when one of the signals comes that end a command; those that it was
/// started to ignore, as by nohup(1), are not among them.
Descriptor WatchSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) ::sigaddset(&signals, signal);
  }
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
  return Descriptor(Checked(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK), "watch", "signals"));
}

class Pool {
 public:
  Pool(const PoolTasks& tasks, unsigned jobs, const PoolCallbacks& callbacks)
      : tasks_(tasks), callbacks_(callbacks), signals_(WatchSignals()), slots_(std::max(jobs, 1U)) {}

  PoolStatus Run() {
    while (true) {
      GiveOut();
      const bool is_idle =
          std::ranges::none_of(slots_, [](const Slot& slot) { return slot.task.has_value(); });
      if (is_idle && state_ == State::AtEnd) return PoolStatus::AllDone;
      if (!Wait()) return PoolStatus::Interrupted;
      callbacks_.on_tick();
    }
  }

 private:
  struct Slot {
    std::unique_ptr<PoolWorker> worker;
    std::optional<std::string> task;  // that it works at
  };

  void GiveOut() {
    for (Slot& slot : slots_) {
      if (slot.task) continue;
      state_ = tasks_.look();
      if (state_ != State::Ready) return;
      Give(slot, tasks_.take());
    }
  }

  void Give(Slot& slot, std::string task) {
    if (!slot.worker || !IsSent(*slot.worker, task)) {
      slot.worker = std::make_unique<PoolWorker>(callbacks_.work);
      slot.worker->Send(task);
    }
    slot.task = std::move(task);
  }

  /// Returns false if the worker ended while it had nothing to do.
  static bool IsSent(PoolWorker& worker, const std::string& task) {
    try {
      worker.Send(task);
      return true;
    } catch (const std::system_error&) {
      return false;
    }
  }

  /// Returns false when a signal came.
  bool Wait() {
    std::vector<pollfd> sources{{signals_.Get(), POLLIN, 0},
                                {state_ == State::Waiting ? tasks_.socket() : -1, POLLIN, 0}};
    for (const Slot& slot : slots_) sources.push_back({slot.task ? slot.worker->Socket() : -1, POLLIN, 0});
    ::poll(sources.data(), sources.size(), kTickMilliseconds);
    if (sources[0].revents != 0) return false;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      if (sources[i + 2].revents != 0) Take(slots_[i]);
    }
    return true;
  }

  void Take(Slot& slot) {
    std::optional<std::string> result;
    try {
      result = slot.worker->Receive();
    } catch (const std::runtime_error& error) {
      slot.worker.reset();
      callbacks_.on_failure(*std::exchange(slot.task, std::nullopt), error.what());
      if (++failures_in_a_row_ < kMaxFailuresInARow) return;
      throw std::runtime_error("gave up after " + std::to_string(kMaxFailuresInARow) +
                               " failures in a row: " + error.what());
    }
    if (!result) return;
    failures_in_a_row_ = 0;
    slot.task.reset();
    callbacks_.on_result(*result);
  }

  const PoolTasks& tasks_;
  const PoolCallbacks& callbacks_;
  Descriptor signals_;
  std::vector<Slot> slots_;
  State state_ = State::Waiting;
  int failures_in_a_row_ = 0;
};

}  // namespace

PoolStatus RunPool(const PoolTasks& tasks, unsigned jobs, const PoolCallbacks& callbacks) {
  return Pool(tasks, jobs, callbacks).Run();
}

std::vector<std::string> ParallelMap(std::size_t count, unsigned jobs,
                                     const std::function<std::string(std::size_t index)>& work) {
  std::vector<std::string> results(count);
  std::size_t next = 0;
  const PoolTasks tasks{
      .look = [&] { return next < count ? State::Ready : State::AtEnd; },
      .take = [&] { return std::to_string(next++); },
      .socket = [] { return -1; },
  };
  const PoolCallbacks callbacks{
      .work = [&](const std::string& index) { return index + " " + work(std::stoul(index)); },
      .on_result =
          [&](const std::string& result) {
            const std::size_t space = result.find(' ');
            results.at(std::stoul(result.substr(0, space))) = result.substr(space + 1);
          },
      .on_failure = [](const std::string&, const std::string& reason) { throw std::runtime_error(reason); },
  };
  if (RunPool(tasks, jobs, callbacks) == PoolStatus::Interrupted) throw std::runtime_error("interrupted");
  return results;
}

}  // namespace lab
