#include "tests/base/log_daemon.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>
#include <vector>

#include "lab/images/descriptor.h"

namespace testing_support {

namespace {

sockaddr_un AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) throw std::runtime_error("too long for a socket: " + path);
  path.copy(address.sun_path, path.size());
  return address;
}

}  // namespace

LogDaemon::LogDaemon(int type, std::string path)
    : path_(std::move(path)),
      type_(type),
      socket_(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  ::unlink(path_.c_str());
  const sockaddr_un address = AddressOf(path_);
  lab::Checked(::bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind",
               path_);
  if (type == SOCK_STREAM) lab::Checked(::listen(socket_.Get(), 1), "listen", path_);
}

LogDaemon::~LogDaemon() {
  ::unlink(path_.c_str());
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
  while (true) {
    lab::Descriptor connection;
    std::string bytes = ReadFrom(connection);
    if (!connection.IsOpen()) return streams;
    streams.push_back(std::move(bytes));
  }
}

std::string LogDaemon::ReadFrom(lab::Descriptor& connection) const {
  std::string bytes;
  for (std::string piece; !(piece = ReadOne(connection)).empty();) bytes += piece;
  return bytes;
}

std::string LogDaemon::ReadOne(lab::Descriptor& connection, std::size_t size) const {
  if (type_ == SOCK_STREAM && !connection.IsOpen()) {
    connection = lab::Descriptor(::accept4(socket_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  }
  const int source = type_ == SOCK_STREAM ? connection.Get() : socket_.Get();
  std::string buffer(size, '\0');
  buffer.resize(static_cast<std::size_t>(std::max<ssize_t>(::recv(source, buffer.data(), size, 0), 0)));
  return buffer;
}

void LogDaemon::Fill() const {
  const sockaddr_un address = AddressOf(path_);
  const auto* const receiver = reinterpret_cast<const sockaddr*>(&address);
  for (bool has_room = true; has_room;) {  // each sender has a bound of its own besides
    const lab::Descriptor sender(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    has_room = false;
    while (::sendto(sender.Get(), "", 0, 0, receiver, sizeof address) == 0) has_room = true;
    if (errno != EAGAIN) lab::ThrowErrno("send to", path_);
  }
}

std::vector<lab::Descriptor> LogDaemon::FillBacklog() const {
  std::vector<lab::Descriptor> waiting;
  const sockaddr_un address = AddressOf(path_);
  do {
    waiting.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  } while (::connect(waiting.back().Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
  if (errno != EAGAIN) lab::ThrowErrno("connect to", path_);
  return waiting;
}

}  // namespace testing_support
