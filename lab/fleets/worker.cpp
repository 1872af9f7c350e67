#include "lab/fleets/worker.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/runs/sealed_process.h"

namespace lab::fleets {
namespace {

using Size = std::uint64_t;

/// The first text of an answer: whether the others are one, or what went wrong.
constexpr const char* kAnswer = "answer";
constexpr const char* kFailure = "failure";

void AppendSize(std::string& bytes, Size size) {
  std::array<char, sizeof size> copy{};
  std::memcpy(copy.data(), &size, sizeof size);
  bytes.append(copy.data(), copy.size());
}

Size SizeAt(std::string_view bytes, std::size_t place) {
  Size size = 0;
  std::memcpy(&size, bytes.data() + place, sizeof size);
  return size;
}

/// The size of what follows, then each text behind its size.
std::string Pack(const Message& message) {
  std::string texts;
  for (const std::string& text : message) {
    AppendSize(texts, text.size());
    texts += text;
  }
  std::string bytes;
  AppendSize(bytes, texts.size());
  return bytes + texts;
}

/// Takes a whole message off the start of `bytes`.
std::optional<Message> Unpack(std::string& bytes) {
  if (bytes.size() < sizeof(Size) || bytes.size() - sizeof(Size) < SizeAt(bytes, 0)) return std::nullopt;
  const std::size_t end = sizeof(Size) + SizeAt(bytes, 0);
  Message message;
  for (std::size_t place = sizeof(Size); place < end;) {
    const std::size_t size = SizeAt(bytes, place);
    message.push_back(bytes.substr(place + sizeof(Size), size));
    place += sizeof(Size) + size;
  }
  bytes.erase(0, end);
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

[[noreturn]] void Work(int socket, const std::function<Message(const Message&)>& answer) {
  std::string received;
  while (true) {
    std::optional<Message> message;
    while (!(message = Unpack(received))) {
      if (!ReceiveMore(socket, received)) ::_exit(0);
    }
    Message reply{kAnswer};
    try {
      for (std::string& text : answer(*message)) reply.push_back(std::move(text));
    } catch (const std::exception& error) {
      reply = {kFailure, error.what()};
    }
    SendAll(socket, Pack(reply));
  }
}

}  // namespace

Worker::Worker(const std::function<Message(const Message&)>& answer) {
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

Worker::Worker(Worker&& other) noexcept
    : pid_(std::exchange(other.pid_, 0)),
      socket_(std::move(other.socket_)),
      received_(std::move(other.received_)) {}

Worker::~Worker() {
  if (pid_ == 0) return;
  ::kill(pid_, SIGKILL);
  while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void Worker::Send(const Message& message) {
  SendAll(socket_.Get(), Pack(message));
}

std::optional<Message> Worker::Receive() {
  if (!ReceiveMore(socket_.Get(), received_))
    throw std::runtime_error("a worker ended before its work was done");
  std::optional<Message> message = Unpack(received_);
  if (!message) return std::nullopt;
  if (message->size() == 2 && message->front() == kFailure) throw std::runtime_error(message->back());
  message->erase(message->begin());
  return message;
}

}  // namespace lab::fleets
