#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

#include "lab/images/descriptor.h"

namespace lab {

/// An isolated process (ForkSealed) that answers one message after another; messages are any bytes. Ends, and
/// takes all that it started along, with the object or with this process.
class PoolWorker {
 public:
  /// `answer` is called there. What it throws is reported as what Receive throws.
  explicit PoolWorker(const std::function<std::string(const std::string&)>& answer);
  PoolWorker(const PoolWorker&) = delete;
  PoolWorker& operator=(const PoolWorker&) = delete;
  ~PoolWorker();

  /// Becomes readable when an answer comes, or the worker ends.
  int Socket() const { return socket_.Get(); }

  void Send(const std::string& message);
  /// Takes in what has come; returns an answer once there is a whole one. Throws std::runtime_error with what
  /// the worker failed for.
  std::optional<std::string> Receive();

 private:
  pid_t pid_;
  Descriptor socket_;
  std::string received_;
};

}  // namespace lab
