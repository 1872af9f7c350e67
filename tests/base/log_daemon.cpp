#include "tests/base/log_daemon.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <vector>

#include "lab/images/descriptor.h"

namespace testing_support {

using KELP::Wifi::UniqueFd;

LogDaemon::LogDaemon(int type) : socket_(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  ::unlink("/dev/log");
  const sockaddr_un address{AF_UNIX, "/dev/log"};
  lab::Checked(::bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind",
               "/dev/log");
  if (type == SOCK_STREAM) lab::Checked(::listen(socket_.Get(), 1), "listen", "/dev/log");
}

LogDaemon::~LogDaemon() {
  ::unlink("/dev/log");
}

std::vector<std::string> LogDaemon::Datagrams() const {
  std::vector<std::string> datagrams;
  std::string buffer(256UL * 1024, '\0');
  for (ssize_t size = 0; (size = ::recv(socket_.Get(), buffer.data(), buffer.size(), 0)) >= 0;) {
    datagrams.push_back(buffer.substr(0, static_cast<std::size_t>(size)));
  }
  return datagrams;
}

std::vector<std::string> LogDaemon::Streams() const {
  std::vector<std::string> streams;
  std::string buffer(256UL * 1024, '\0');
  while (true) {
    const UniqueFd connection(::accept4(socket_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection.IsOpen()) return streams;
    std::string bytes;
    for (ssize_t size = 0; (size = ::recv(connection.Get(), buffer.data(), buffer.size(), 0)) > 0;) {
      bytes.append(buffer, 0, static_cast<std::size_t>(size));
    }
    streams.push_back(std::move(bytes));
  }
}

}  // namespace testing_support
