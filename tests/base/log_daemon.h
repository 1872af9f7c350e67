#pragma once

#include <string>
#include <vector>

#include "base/unique_fd.h"

namespace testing_support {

/// A log daemon of the test's own at "/dev/log" of the entered root, in the place of what listens there. It
/// reads only when it is asked to.
class LogDaemon {
 public:
  /// SOCK_DGRAM or SOCK_STREAM.
  explicit LogDaemon(int type);
  LogDaemon(const LogDaemon&) = delete;
  LogDaemon& operator=(const LogDaemon&) = delete;
  ~LogDaemon();

  /// Of a daemon of datagrams: all that wait.
  std::vector<std::string> Datagrams() const;
  /// Of a daemon of streams: the bytes of each connection that waits, up to its end or to where no more wait.
  std::vector<std::string> Streams() const;

  int Socket() const { return socket_.Get(); }

 private:
  KELP::Wifi::UniqueFd socket_;
};

}  // namespace testing_support
