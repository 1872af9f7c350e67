#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/images/private_root.h"

namespace lab {

/// One message to the system log.
struct LogLine {
  /// 0 (LOG_EMERG) to 7 (LOG_DEBUG).
  int severity = 0;
  /// As <syslog.h> has it: LOG_USER, LOG_DAEMON and so on.
  int facility = 0;
  /// The sender's name, without a process number.
  std::string ident;
  /// Any bytes.
  std::string message;

  /// The number as it is sent: facility and severity in one.
  int priority() const { return facility | severity; }

  bool operator==(const LogLine&) const = default;
};

/// For the messages of failed tests.
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/// Reads what syslog(3) sends: "<11>Nov 21 13:17:00 kelpwifiupdater: text". Of a datagram of another form,
/// the parts that are missing stay zero or empty and all that is left is the message.
LogLine ParseLogLine(std::string_view datagram);

/// The system log of a private root: a socket at its /dev/log. A sender of syslog(3) blocks while ten
/// datagrams wait unread, so whoever owns a collector drains it while the sender runs. The root must stay
/// where it is for as long. Of what a sender gone wild sends it keeps the first 16 MiB.
class LogCollector {
 public:
  explicit LogCollector(PrivateRoot& root);
  LogCollector(const LogCollector&) = delete;
  LogCollector& operator=(const LogCollector&) = delete;
  ~LogCollector();

  /// The socket, for poll(2).
  int Socket() const { return socket_.Get(); }
  /// Takes in all that waits, without blocking.
  void Drain();
  /// Sends itself so much that no sender finds room before the next Drain().
  void Fill();
  /// Drains, and gives the lines collected since the last call in the order in which they were sent.
  std::vector<LogLine> Take();

 private:
  Descriptor directory_;
  Descriptor socket_;
  std::vector<std::string> datagrams_;
  std::size_t kept_bytes_ = 0;
};

}  // namespace lab
