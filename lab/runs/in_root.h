#pragma once

#include <mutex>
#include <semaphore>
#include <stop_token>
#include <thread>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"
#include "lab/runs/log_collector.h"

namespace lab {

/// Takes the whole process into a private root for as long as the object lives: "/" is the device's, the
/// current folder is "/", and what syslog(3) sends is collected. Needs EnterNamespaces() at the start of the
/// process. Leaving puts the former root and current folder back. One at a time.
class InRoot {
 public:
  explicit InRoot(PrivateRoot& root);
  InRoot(const InRoot&) = delete;
  InRoot& operator=(const InRoot&) = delete;
  ~InRoot();

  /// What was logged since the last call, all that this process logged before the call included.
  std::vector<LogLine> Log();

 private:
  void Collect(const std::stop_token& stop);

  Descriptor outer_root_;
  Descriptor outer_folder_;
  Descriptor wake_;
  std::mutex collector_mutex_;
  LogCollector collector_;
  std::binary_semaphore is_collecting_{0};
  std::jthread thread_;
};

}  // namespace lab
