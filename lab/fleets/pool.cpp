#include "lab/fleets/pool.h"

#include <poll.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace lab::fleets {
namespace {

constexpr int kTickMilliseconds = 500;

/// So many devices in a row given up tell of the host.
constexpr int kGivenUpInARow = 5;

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
  Pool(DeviceQueue& queue, unsigned jobs, const PoolTasks& tasks)
      : queue_(queue), tasks_(tasks), signals_(WatchSignals()), places_(std::max(jobs, 1U)) {}

  PoolEnd Run() {
    while (true) {
      GiveOut();
      const bool is_idle =
          std::ranges::none_of(places_, [](const Place& place) { return place.source.has_value(); });
      if (is_idle && state_ == DeviceQueue::State::AtEnd) return PoolEnd::AllDone;
      if (!Wait()) return PoolEnd::Interrupted;
      tasks_.tick();
    }
  }

 private:
  struct Place {
    std::unique_ptr<Worker> worker;
    std::optional<DeviceSource> source;  // that it works at
  };

  void GiveOut() {
    for (Place& place : places_) {
      while (!place.source) {
        state_ = queue_.Look();
        if (state_ != DeviceQueue::State::Ready) return;
        DeviceSource source = queue_.Take();
        if (tasks_.is_wanted(source)) Give(place, std::move(source));
      }
    }
  }

  void Give(Place& place, DeviceSource source) {
    const Message message = PackSource(source);
    if (!place.worker || !IsSent(*place.worker, message)) {
      place.worker = std::make_unique<Worker>(
          [this](const Message& received) { return tasks_.work(UnpackSource(received)); });
      place.worker->Send(message);
    }
    place.source = std::move(source);
  }

  /// Gives false where the worker ended while it had nothing to do.
  static bool IsSent(Worker& worker, const Message& message) {
    try {
      worker.Send(message);
      return true;
    } catch (const std::system_error&) {
      return false;
    }
  }

  /// Gives false when a signal came.
  bool Wait() {
    std::vector<pollfd> sources{{signals_.Get(), POLLIN, 0},
                                {state_ == DeviceQueue::State::Waiting ? queue_.Socket() : -1, POLLIN, 0}};
    for (const Place& place : places_) {
      sources.push_back({place.source ? place.worker->Socket() : -1, POLLIN, 0});
    }
    ::poll(sources.data(), sources.size(), kTickMilliseconds);
    if (sources[0].revents != 0) return false;
    for (std::size_t i = 0; i < places_.size(); ++i) {
      if (sources[i + 2].revents != 0) Take(places_[i]);
    }
    return true;
  }

  void Take(Place& place) {
    std::optional<Message> answer;
    try {
      answer = place.worker->Receive();
    } catch (const std::runtime_error& error) {
      place.worker.reset();
      tasks_.give_up(*std::exchange(place.source, std::nullopt), error.what());
      if (++given_up_in_a_row_ == kGivenUpInARow) {
        throw std::runtime_error("gave up at " + std::to_string(kGivenUpInARow) +
                                 " devices in a row: " + error.what());
      }
      return;
    }
    if (!answer) return;
    given_up_in_a_row_ = 0;
    const DeviceSource source = *std::exchange(place.source, std::nullopt);
    tasks_.deliver(source, *answer);
  }

  DeviceQueue& queue_;
  const PoolTasks& tasks_;
  Descriptor signals_;
  std::vector<Place> places_;
  DeviceQueue::State state_ = DeviceQueue::State::Waiting;
  int given_up_in_a_row_ = 0;
};

}  // namespace

Message PackSource(const DeviceSource& source) {
  Message message{source.image, source.from, std::to_string(source.files.size())};
  for (const auto* texts : {&source.files, &source.boot}) {
    for (const auto& [name, text] : *texts) {
      message.push_back(name);
      message.push_back(text);
    }
  }
  return message;
}

DeviceSource UnpackSource(const Message& message) {
  DeviceSource source{message.at(0), message.at(1), {}, {}};
  const std::size_t files = std::stoul(message.at(2));
  for (std::size_t i = 3; i + 1 < message.size(); i += 2) {
    auto& texts = (i - 3) / 2 < files ? source.files : source.boot;
    texts[message[i]] = message[i + 1];
  }
  return source;
}

PoolEnd WorkOff(DeviceQueue& queue, unsigned jobs, const PoolTasks& tasks) {
  return Pool(queue, jobs, tasks).Run();
}

}  // namespace lab::fleets
