#include "lab/runs/pool_worker.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string_view>

#include "lab/runs/sealed_process.h"

namespace lab {
namespace {

using Size = std::uint64_t;

/// How an answer begins: with the result, or with what went wrong.
constexpr char kResult = '+';
constexpr char kFailure = '-';

/// A message after its size.
std::string Framed(std::string_view message) {
  const Size size = message.size();
  std::string bytes(sizeof size, '\0');
  std::memcpy(bytes.data(), &size, sizeof size);
  return bytes.append(message);
}

/// Takes a whole message off the start of `bytes`.
std::optional<std::string> TakeMessage(std::string& bytes) {
  Size size = 0;
  if (bytes.size() < sizeof size) return std::nullopt;
  std::memcpy(&size, bytes.data(), sizeof size);
  if (bytes.size() - sizeof size < size) return std::nullopt;
  std::string message = bytes.substr(sizeof size, size);
  bytes.erase(0, sizeof size + size);
  return message;
}

void SendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    bytes.remove_prefix(static_cast<std::size_t>(Checked(sent, "send to", "the other process")));
  }
}

/// Adds what comes, waiting for it. Gives false at the end.
bool ReceiveMore(int socket, std::string& bytes) {
  std::array<char, 64 * 1024> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): recv() fills it
  ssize_t size = -1;
  do {
    size = ::recv(socket, piece.data(), piece.size(), 0);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) return false;
  bytes.append(piece.data(), static_cast<std::size_t>(size));
  return true;
}

[[noreturn]] void Work(int socket, const std::function<std::string(const std::string&)>& answer) {
  std::string received;
  while (true) {
    std::optional<std::string> message;
    while (!(message = TakeMessage(received))) {
      if (!ReceiveMore(socket, received)) ::_exit(0);
    }
    std::string reply(1, kResult);
    try {
      reply += answer(*message);
    } catch (const std::exception& error) {
      reply.assign(1, kFailure).append(error.what());
    }
    SendAll(socket, Framed(reply));
  }
}

}  // namespace

PoolWorker::PoolWorker(const std::function<std::string(const std::string&)>& answer) {
  std::array<int, 2> ends{};
  Checked(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), "make", "a pair of sockets");
  socket_ = Descriptor(ends[0]);
  const Descriptor theirs(ends[1]);
  pid_ = ForkSealed();
  if (pid_ != 0) return;
  socket_.Close();
  // A terminal's signals go to all of its processes; whether this one ends is for the other to say.
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  try {
    Work(theirs.Get(), answer);
  } catch (const std::exception&) {
    ::_exit(1);  // the other process is gone
  }
}

PoolWorker::~PoolWorker() {
  EndSealed(pid_);
}

void PoolWorker::Send(const std::string& message) {
  SendAll(socket_.Get(), Framed(message));
}

std::optional<std::string> PoolWorker::Receive() {
  if (!ReceiveMore(socket_.Get(), received_)) {
    throw std::runtime_error("a worker ended before its work was done");
  }
  std::optional<std::string> message = TakeMessage(received_);
  if (!message) return std::nullopt;
  const bool is_failure = message->front() == kFailure;
  message->erase(0, 1);
  if (is_failure) throw std::runtime_error(*message);
  return message;
}

}  // namespace lab
