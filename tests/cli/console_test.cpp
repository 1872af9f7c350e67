#include "cli/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "base/wait_budget.h"
#include "cli/process.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/captured_streams.h"
#include "tests/support/hang_guard.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::ConsoleResult;
using testing_support::RunOnConsole;

/// The exit status of `operation` in a process of its own; 1000 and the signal when one ended it.
template <typename Operation>
int InAChild(Operation operation) {
  const pid_t child = ::fork();
  if (child == 0) {
    const testing_support::HangGuard guard("the operation in the child process");
    ::_exit(operation());
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

/// Makes `descriptor` the writing end of a pipe that nobody reads.
void BreakStream(int descriptor) {
  int ends[2];
  if (::pipe(ends) != 0) ::_exit(99);
  ::dup2(ends[1], descriptor);
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST(Console, PartsAreWrittenOneBehindTheOther) {
  const ConsoleResult result = RunOnConsole([] {
    WriteToStandardOutput({"one ", "", "two\n"});
    WriteToStandardError({"three ", "four\n"});
    WriteToStandardOutput({"five"});
    return 0;
  });
  EXPECT_EQ(result.out, "one two\nfive");
  EXPECT_EQ(result.err, "three four\n");
}

TEST(Console, TextIsWrittenAtOnce) {
  const testing_support::CapturedStream out(1);
  const testing_support::CapturedStream err(2);
  WriteToStandardOutput({"no line end"});
  EXPECT_EQ(out.Text(), "no line end");
  WriteToStandardError({"nor here"});
  EXPECT_EQ(err.Text(), "nor here");
}

TEST(Console, TextsAreBytes) {
  using namespace std::string_view_literals;
  const ConsoleResult result = RunOnConsole([] {
    WriteToStandardOutput({"a\0b"sv, "%s\xff"sv});
    return 0;
  });
  EXPECT_EQ(result.out, std::string("a\0b%s\xff", 6));
}

TEST(Console, LongTextsAreWrittenWhole) {
  const std::string text(1000000, 'x');
  const ConsoleResult result = RunOnConsole([&] {
    WriteToStandardError({text, "\n"});
    return 0;
  });
  EXPECT_EQ(result.err.size(), 1000001U);
}

TEST(Console, BrokenStreamsCostTheTextOnly) {
  EXPECT_EQ(InAChild([] {
              LetWritesFail();
              BreakStream(STDOUT_FILENO);
              BreakStream(STDERR_FILENO);
              WriteToStandardOutput({"lost", "too"});
              WriteToStandardError({"lost", "too"});
              return 7;
            }),
            7);
}

TEST(Console, FullStreamsCostTheTextOnly) {
  EXPECT_EQ(InAChild([] {
              const int full = ::open("/dev/full", O_WRONLY);
              if (full < 0) return 99;
              ::dup2(full, STDERR_FILENO);
              WriteToStandardError({"lost"});
              return 7;
            }),
            7);
}

/// Makes `descriptor` the writing end of a pipe that is full; gives the reading end.
int FillStream(int descriptor) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_NONBLOCK) != 0) ::_exit(99);
  while (::write(ends[1], "f", 1) > 0) {
  }
  ::fcntl(ends[1], F_SETFL, 0);
  ::dup2(ends[1], descriptor);
  ::close(ends[1]);
  return ends[0];
}

/// What waits in a pipe, but for what FillStream put there.
std::string TakeText(int reading_end) {
  std::string text;
  std::array<char, 4096> piece{};
  for (ssize_t size = 0; (size = ::read(reading_end, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<std::size_t>(size));
  }
  return text.substr(std::min(text.find_first_not_of('f'), text.size()));
}

TEST(Console, StreamsThatNobodyReadsCostTheTextOnly) {
  EXPECT_EQ(InAChild([] {
              const int out = FillStream(STDOUT_FILENO);
              const int err = FillStream(STDERR_FILENO);
              WriteToStandardError({"lost", "too"});
              for (int i = 0; i < 100; ++i) WriteToStandardOutput({"lost", "too"});
              return TakeText(out).empty() && TakeText(err).empty() ? 7 : 1;
            }),
            7);
}

TEST(Console, TimeOfTheLogIsNotTheirs) {
  EXPECT_EQ(InAChild([] {
              const int err = FillStream(STDERR_FILENO);
              LogWaitBudget().SpendAll();
              std::string got;
              std::thread reader([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
                got = TakeText(err);
              });
              WriteToStandardError({"late"});
              reader.join();
              return got + TakeText(err) == "late" ? 7 : 1;
            }),
            7);
}

TEST(Console, StreamsThatAreReadLateLoseNothing) {
  EXPECT_EQ(InAChild([] {
              const int err = FillStream(STDERR_FILENO);
              std::string got;
              std::thread reader([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                while (!got.ends_with("end")) got += TakeText(err);
              });
              const std::string text(300'000, 'x');
              WriteToStandardError({text, "end"});
              reader.join();
              return got == text + "end" ? 7 : 1;
            }),
            7);
}

/// Lets the kernel grant this process no timer.
void RefuseTimers() {
  const rlimit none{.rlim_cur = 0, .rlim_max = 0};
  ::setrlimit(RLIMIT_SIGPENDING, &none);
}

TEST(Console, StreamsThatNobodyReadsCostTheTextOnlyWhereThereIsNoTimer) {
  EXPECT_EQ(InAChild([] {
              RefuseTimers();
              std::array<int, 2> ends{};
              if (::pipe(ends.data()) != 0) return 99;
              ::dup2(ends[1], STDERR_FILENO);
              WriteToStandardError({std::string(300'000, 'x')});  // more than there is room for
              const int err = FillStream(STDERR_FILENO);
              for (int i = 0; i < 100; ++i) WriteToStandardError({"lost", "too"});
              return TakeText(err).empty() ? 7 : 1;
            }),
            7);
}

TEST(Console, StreamsThatAreReadLateLoseNothingWhereThereIsNoTimer) {
  EXPECT_EQ(InAChild([] {
              RefuseTimers();
              const int err = FillStream(STDERR_FILENO);
              std::string got;
              std::thread reader([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                while (!got.ends_with("end")) got += TakeText(err);
              });
              const std::string text(300'000, 'x');
              WriteToStandardError({text, "end"});
              reader.join();
              return got == text + "end" ? 7 : 1;
            }),
            7);
}

TEST(Console, TextThatNeedNotWaitIsWrittenWhereNoTimeIsLeft) {
  EXPECT_EQ(InAChild([] {
              FillStream(STDOUT_FILENO);
              WriteToStandardOutput({"waits in vain"});
              const testing_support::CapturedStream err(2);
              WriteToStandardError({"one ", "two"});
              return err.Text() == "one two" ? 7 : 1;
            }),
            7);
}

int OpenDescriptors() {
  int count = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) count += ::fcntl(descriptor, F_GETFD) < 0 ? 0 : 1;
  return count;
}

TEST(Console, ClosedStreamsAreFilledOnADeviceThatHasNothing) {
  lab::PrivateRoot device;  // not even a null device
  const lab::InRoot inside(device);
  EXPECT_EQ(InAChild([] {
              const int before = OpenDescriptors();
              for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
              SecureStandardStreams();
              if (OpenDescriptors() != before) return 1;
              // Neither of them is free for a file of the run.
              if (::open("/", O_RDONLY) <= STDERR_FILENO) return 2;
              WriteToStandardOutput({"lost"});
              WriteToStandardError({"lost"});
              return 7;
            }),
            7);
}

TEST(Console, EachClosedStreamIsFilledByItself) {
  for (const int closed : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    EXPECT_EQ(InAChild([closed] {
                ::close(closed);
                const int others = OpenDescriptors();
                SecureStandardStreams();
                if (OpenDescriptors() != others + 1) return 1;  // none besides is left open
                return ::fcntl(closed, F_GETFD) < 0 ? 2 : 7;
              }),
              7)
        << closed;
  }
}

TEST(Console, OpenStreamsStayAsTheyAre) {
  const testing_support::CapturedStream out(1);
  EXPECT_EQ(InAChild([] {
              const int before = OpenDescriptors();
              SecureStandardStreams();
              if (OpenDescriptors() != before) return 1;
              WriteToStandardOutput({"kept"});
              return 7;
            }),
            7);
  EXPECT_EQ(out.Text(), "kept");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
