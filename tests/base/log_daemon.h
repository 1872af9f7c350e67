#pragma once

#include <string>
#include <vector>

#include "lab/images/descriptor.h"

namespace testing_support {

/// A log daemon of the test's own at "/dev/log" of the entered root, or at another path, in the place of what
/// listens there. It reads only when it is asked to.
class LogDaemon {
 public:
  /// SOCK_DGRAM or SOCK_STREAM.
  explicit LogDaemon(int type, std::string path = "/dev/log");
  LogDaemon(const LogDaemon&) = delete;
  LogDaemon& operator=(const LogDaemon&) = delete;
  ~LogDaemon();

  /// Of a daemon of datagrams: all that wait.
  std::vector<std::string> Datagrams() const;
  /// Of a daemon of streams: the bytes of each connection that waits, up to its end or to where no more wait.
  std::vector<std::string> Streams() const;

  /// Of a daemon of streams: takes in what waits on `connection`, the next one where it is none yet.
  std::string ReadFrom(lab::Descriptor& connection) const;
  /// Of either: a datagram, or up to `size` bytes of `connection`. Empty where nothing waits.
  std::string ReadOne(lab::Descriptor& connection, std::size_t size = 256UL * 1024) const;

  /// Of a daemon of datagrams: sends itself so much that no sender finds room.
  void Fill() const;
  /// Of a daemon of streams: connects until there is no room for another connection; they wait for as long as
  /// they are open.
  std::vector<lab::Descriptor> FillBacklog() const;

 private:
  std::string path_;
  int type_;
  lab::Descriptor socket_;
};

}  // namespace testing_support
