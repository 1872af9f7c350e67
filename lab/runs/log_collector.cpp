#include "lab/runs/log_collector.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <iomanip>
#include <ostream>
#include <utility>

namespace lab {
namespace {

constexpr const char* kDirectory = "/dev";
constexpr const char* kName = "log";
constexpr std::string_view kPath = "/dev/log";

/// More than can wait in the socket, so that all of it is taken; yet a sender that never stops is no reason
/// not to return.
constexpr int kTakenAtOnce = 4096;

constexpr std::size_t kKept = std::size_t{16} << 20;

/// "<11>" at the start of `rest`, and takes it off. Zero, with nothing taken, where there is none.
int TakePriority(std::string_view& rest) {
  const std::size_t end = rest.find('>');
  if (!rest.starts_with('<') || end == std::string_view::npos) return 0;
  int priority = 0;
  const char* const last = rest.data() + end;
  const auto [stop, error] = std::from_chars(rest.data() + 1, last, priority);
  if (error != std::errc() || stop != last) return 0;
  rest.remove_prefix(end + 1);
  return priority;
}

/// "Nov 21 13:17:00 " at the start of `rest`.
bool TakeTime(std::string_view& rest) {
  constexpr std::string_view kForm = "aaa .0 00:00:00 ";
  if (rest.size() < kForm.size()) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool is_digit = rest[i] >= '0' && rest[i] <= '9';
    switch (kForm[i]) {
      case 'a':
        break;
      case '.':
        if (!is_digit && rest[i] != ' ') return false;
        break;
      case '0':
        if (!is_digit) return false;
        break;
      default:
        if (rest[i] != kForm[i]) return false;
    }
  }
  rest.remove_prefix(kForm.size());
  return true;
}

/// "name: " or "name[123]: " at the start of `rest`.
std::string_view TakeIdent(std::string_view& rest) {
  const std::size_t end = rest.find(": ");
  if (end == std::string_view::npos) return {};
  const std::string_view ident = rest.substr(0, end);
  rest.remove_prefix(end + 2);
  return ident.substr(0, ident.find('['));
}

/// The folder by its descriptor: the root's own path may be longer than a socket's address.
sockaddr_un Address(const Descriptor& directory) {
  const std::string path = "/proc/self/fd/" + std::to_string(directory.Get()) + "/" + kName;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << '<' << line.priority() << '>' << line.ident << ": " << std::quoted(line.message);
}

LogLine ParseLogLine(std::string_view datagram) {
  LogLine line;
  const int priority = TakePriority(datagram);
  line.severity = LOG_PRI(priority);
  line.facility = priority & LOG_FACMASK;
  if (TakeTime(datagram)) line.ident = TakeIdent(datagram);
  line.message = datagram;
  return line;
}

LogCollector::LogCollector(PrivateRoot& root)
    : directory_(root.Open(kDirectory, O_PATH | O_DIRECTORY)),
      socket_(Checked(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "make a socket for",
                      kPath)) {
  const sockaddr_un address = Address(directory_);
  Checked(::bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind", kPath);
  Checked(::fchmodat(directory_.Get(), kName, 0666, 0), "set the mode of", kPath);
  root.MarkProvided(std::string(kPath));
}

LogCollector::~LogCollector() {
  struct stat status {};
  if (::fstatat(directory_.Get(), kName, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISSOCK(status.st_mode)) {
    ::unlinkat(directory_.Get(), kName, 0);
  }
}

void LogCollector::Drain() {
  for (int taken = 0; taken < kTakenAtOnce; ++taken) {
    const ssize_t size = ::recv(socket_.Get(), nullptr, 0, MSG_PEEK | MSG_TRUNC);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0 && errno == EAGAIN) return;
    std::string datagram(static_cast<std::size_t>(Checked(size, "receive from", kPath)), '\0');
    Checked(::recv(socket_.Get(), datagram.data(), datagram.size(), 0), "receive from", kPath);
    if (kept_bytes_ + datagram.size() > kKept) continue;
    kept_bytes_ += datagram.size();
    datagrams_.push_back(std::move(datagram));
  }
}

void LogCollector::Fill() {
  const sockaddr_un address = Address(directory_);
  const auto* const receiver = reinterpret_cast<const sockaddr*>(&address);
  for (bool has_room = true; has_room;) {
    // Each sender has a bound of its own; only when a new one finds no room there is none.
    const Descriptor sender(
        Checked(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "make a socket for", kPath));
    has_room = false;
    while (::sendto(sender.Get(), "", 0, 0, receiver, sizeof address) == 0) has_room = true;
    if (errno != EAGAIN) ThrowErrno("send to", kPath);
  }
}

std::vector<LogLine> LogCollector::Take() {
  Drain();
  std::vector<LogLine> lines;
  lines.reserve(datagrams_.size());
  for (const std::string& datagram : datagrams_) lines.push_back(ParseLogLine(datagram));
  datagrams_.clear();
  kept_bytes_ = 0;
  return lines;
}

}  // namespace lab
