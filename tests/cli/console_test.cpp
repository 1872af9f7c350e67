#include "cli/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "tests/support/captured_streams.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::ConsoleResult;
using testing_support::RunOnConsole;

/// The exit status of `operation` in a process of its own; 1000 and the signal when one ended it.
template <typename Operation>
int InAChild(Operation operation) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(operation());
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
              SecureStandardStreams();
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

TEST(Console, ClosedStreamsAreOpenedOnTheNullDevice) {
  EXPECT_EQ(InAChild([] {
              ::close(STDIN_FILENO);
              ::close(STDOUT_FILENO);
              ::close(STDERR_FILENO);
              SecureStandardStreams();
              // Neither of them is free for a file of the run.
              const int next = ::open("/dev/null", O_RDONLY);
              if (next <= STDERR_FILENO) return 1;
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
                SecureStandardStreams();
                return ::fcntl(closed, F_GETFD) < 0 ? 1 : 7;
              }),
              7)
        << closed;
  }
}

TEST(Console, OpenStreamsStayAsTheyAre) {
  const testing_support::CapturedStream out(1);
  EXPECT_EQ(InAChild([] {
              SecureStandardStreams();
              WriteToStandardOutput({"kept"});
              return 7;
            }),
            7);
  EXPECT_EQ(out.Text(), "kept");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
