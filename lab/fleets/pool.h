#pragma once

#include <functional>
#include <string>

#include "lab/fleets/device_queue.h"
#include "lab/fleets/device_source.h"
#include "lab/fleets/worker.h"

namespace lab::fleets {

/// A device as a message to a worker, and back.
Message PackSource(const DeviceSource& source);
DeviceSource UnpackSource(const Message& message);

/// How a queue of devices is worked off.
struct PoolTasks {
  /// Called in a worker for each device.
  std::function<Message(const DeviceSource&)> work;
  /// Whether a device is to be given to a worker; others are passed over.
  std::function<bool(const DeviceSource&)> is_wanted;
  /// Called here with each answer, as soon as it comes.
  std::function<void(const DeviceSource&, const Message&)> deliver;
  /// Called here for a device at which the host or the worker failed. The worker is replaced.
  std::function<void(const DeviceSource&, const std::string& reason)> give_up;
  /// Called here from time to time, at least once a second.
  std::function<void()> tick;
};

enum class PoolEnd {
  AllDone,
  /// SIGINT, SIGTERM or SIGHUP came. What was not delivered by then is lost.
  Interrupted,
};

/// Works the queue off with `jobs` workers. What one of the tasks throws here ends the pool and is thrown on;
/// the workers end in every case. The three signals are blocked in this process from here on.
PoolEnd WorkOff(DeviceQueue& queue, unsigned jobs, const PoolTasks& tasks);

}  // namespace lab::fleets
