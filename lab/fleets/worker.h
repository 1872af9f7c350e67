#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "lab/images/descriptor.h"

namespace lab::fleets {

/// A few texts, as they go from one process to another.
using Message = std::vector<std::string>;

/// A sealed process (ForkSealed) that answers one message after another. Ends, and takes all that it started
/// along, with the object or with this process.
class Worker {
 public:
  /// `answer` is called there. What it throws is reported as what Receive throws.
  explicit Worker(const std::function<Message(const Message&)>& answer);
  Worker(Worker&&) noexcept;
  Worker& operator=(Worker&&) = delete;
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker();

  /// Becomes readable when an answer comes, or the worker ends.
  int Socket() const { return socket_.Get(); }

  void Send(const Message& message);
  /// Takes in what has come; gives an answer once there is a whole one. Throws std::runtime_error with what
  /// the worker failed for.
  std::optional<Message> Receive();

 private:
  pid_t pid_;
  Descriptor socket_;
  std::string received_;
};

}  // namespace lab::fleets
