#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace lab {

/// The tasks of a pool, one after another. A task is any bytes.
struct PoolTasks {
  enum class State { Ready, Waiting, AtEnd };
  /// Whether take() has a task. Waiting: the next one has not come yet; it is polled for on socket().
  std::function<State()> look;
  std::function<std::string()> take;
  std::function<int()> socket;
};

/// What is done with them.
struct PoolCallbacks {
  /// Called in a worker for each task. Returns any bytes.
  std::function<std::string(const std::string& task)> work;
  /// Called here with each result, as soon as it comes.
  std::function<void(const std::string& result)> on_result;
  /// Called here for a task at which the host or the worker failed. The worker is replaced.
  std::function<void(const std::string& task, const std::string& reason)> on_failure;
  /// Called here from time to time, at least once a second.
  std::function<void()> on_tick = [] {};
};

enum class PoolStatus {
  AllDone,
  /// SIGINT, SIGTERM or SIGHUP came. Results that had not come by then are lost.
  Interrupted,
};

/// Does all tasks in `jobs` processes of their own (ForkSealed), which this process must be able to make.
/// What a callback throws here ends the pool and is thrown on; so does a fifth failure in a row. The workers
/// end in every case. The three signals are blocked in this process from the call on.
PoolStatus RunPool(const PoolTasks& tasks, unsigned jobs, const PoolCallbacks& callbacks);

/// The results of `work` for 0 to `count` - 1, in order, found in `jobs` processes. Throws std::runtime_error
/// with the reason if one fails, and when a signal comes that ends RunPool.
std::vector<std::string> ParallelMap(std::size_t count, unsigned jobs,
                                     const std::function<std::string(std::size_t index)>& work);

}  // namespace lab
