#include "lab/runs/program_output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <utility>

#include "lab/runs/program_start.h"

namespace lab {
namespace {

constexpr std::size_t kKept = std::size_t{16} << 20;

/// More than a pipe holds, so that what a program left there is taken at once.
constexpr int kPiecesAtOnce = 32;

/// Writes into a pipe until it takes no more.
void Fill(const Descriptor& pipe) {
  const std::array<char, PIPE_BUF> piece{};
  Checked(::fcntl(pipe.Get(), F_SETFL, O_NONBLOCK), "arrange", "a pipe");
  while (::write(pipe.Get(), piece.data(), piece.size()) > 0) {
  }
  Checked(::fcntl(pipe.Get(), F_SETFL, 0), "arrange", "a pipe");
}

}  // namespace

ProgramOutput::ProgramOutput(Console console) {
  std::array<int, 2> ends{};
  Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
  Descriptor reading(ends[0]);
  writing_ = AboveStandardStreams(Descriptor(ends[1]));
  if (console == Console::Full) {
    Fill(writing_);
    unread_ = std::move(reading);
  } else if (console != Console::Broken) {
    reading_ = std::move(reading);
    Checked(::fcntl(reading_.Get(), F_SETFL, O_NONBLOCK), "arrange", "a pipe");
  }
}

void ProgramOutput::Drain() {
  std::array<char, 64 * 1024> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
  for (int taken_pieces = 0; reading_.IsOpen() && taken_pieces < kPiecesAtOnce; ++taken_pieces) {
    const ssize_t taken = ::read(reading_.Get(), piece.data(), piece.size());
    if (taken > 0) {
      text_.append(piece.data(), std::min(static_cast<std::size_t>(taken), kKept - text_.size()));
    } else if (taken == 0) {
      reading_.Close();
    } else if (errno == EAGAIN) {
      return;
    } else if (errno != EINTR) {
      ThrowErrno("read", "what the program prints");
    }
  }
}

bool DrainUntilEnd(const Descriptor& process, ProgramOutput& out, ProgramOutput& err, LogCollector* log,
                   std::chrono::steady_clock::time_point deadline) {
  while (true) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (left <= 0) return false;
    std::array<pollfd, 4> sources{pollfd{process.Get(), POLLIN, 0}, pollfd{out.ReadingEnd(), POLLIN, 0},
                                  pollfd{err.ReadingEnd(), POLLIN, 0},
                                  pollfd{log != nullptr ? log->Socket() : -1, POLLIN, 0}};
    ::poll(sources.data(), sources.size(), static_cast<int>(std::min<std::int64_t>(left, INT_MAX)));
    if (sources[0].revents != 0) return true;
    out.Drain();
    err.Drain();
    if (log != nullptr) log->Drain();
  }
}

std::chrono::milliseconds TimeSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

}  // namespace lab
