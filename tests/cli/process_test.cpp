#include "cli/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "tests/support/captured_streams.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Error;
using testing_support::LogLines;

/// The exit status of `operation`, which nothing can be thrown out of, in a process of its own; 1000 and the
/// signal when one ended it.
template <typename Operation>
int EndOf(Operation operation) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit([&]() noexcept { return operation(); }());
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

TEST(LetWritesFail, BrokenPipeIsAFailedWrite) {
  const auto write_into_broken_pipe = [] {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return 99;
    ::close(ends[0]);
    return ::write(ends[1], "text", 4) < 0 && errno == EPIPE ? 7 : 1;
  };
  EXPECT_EQ(EndOf(write_into_broken_pipe), 1000 + SIGPIPE);
  EXPECT_EQ(EndOf([&] {
              LetWritesFail();
              return write_into_broken_pipe();
            }),
            7);
}

TEST(LetWritesFail, FileBeyondTheLimitIsAFailedWrite) {
  const auto write_beyond_limit = [] {
    const rlimit limit{10, 10};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const int file = ::memfd_create("limited", MFD_CLOEXEC);
    if (file < 0 || ::write(file, "0123456789", 10) != 10) return 99;
    return ::write(file, "text", 4) < 0 && errno == EFBIG ? 7 : 1;
  };
  EXPECT_EQ(EndOf(write_beyond_limit), 1000 + SIGXFSZ);
  EXPECT_EQ(EndOf([&] {
              LetWritesFail();
              return write_beyond_limit();
            }),
            7);
}

class WhatNobodyCatches : public ::testing::Test {
 protected:
  /// How a process ends in which `operation` is called behind ReportWhatNobodyCatches("8000 as typed").
  template <typename Operation>
  int EndAfter(Operation operation) {
    return device_.Run([&] {
      const testing_support::CapturedStream err(2);
      const int end = EndOf([&] {
        ReportWhatNobodyCatches("8000 as typed");
        operation();
        return 7;
      });
      console_ = err.Text();
      return end;
    });
  }
  void ExpectReport(const std::string& reason) {
    EXPECT_EQ(console_, "Failed to update config, error: " + reason + "\n");
    EXPECT_EQ(device_.Log(), LogLines{Error(954, "Failed to update config, error: " + reason +
                                                     ", buildNumber: 8000 as typed")});
  }

  testing_support::TestDevice device_;
  std::string console_;
};

TEST_F(WhatNobodyCatches, StandardExceptionIsReportedAndStatus1) {
  EXPECT_EQ(EndAfter([] { throw std::bad_alloc(); }), 1);
  ExpectReport("std::bad_alloc");
  EXPECT_EQ(EndAfter([] { throw std::runtime_error("some %s reason"); }), 1);
  ExpectReport("some %s reason");
}

TEST_F(WhatNobodyCatches, TerminationWithoutAnExceptionIsALackOfMemoryForOne) {
  EXPECT_EQ(EndAfter([] { std::terminate(); }), 1);
  ExpectReport("std::bad_alloc");
}

TEST_F(WhatNobodyCatches, AnythingElseEndsTheProcessAbnormallyAndSaysNothing) {
  EXPECT_EQ(EndAfter([] { throw 1; }), 1000 + SIGABRT);
  EXPECT_EQ(console_, "");
  EXPECT_EQ(device_.Log(), LogLines{});
}

TEST_F(WhatNobodyCatches, WhatIsCaughtIsNotReported) {
  EXPECT_EQ(EndAfter([] {
              try {
                throw std::runtime_error("caught");
              } catch (const std::exception&) {
              }
            }),
            7);
  EXPECT_EQ(console_, "");
  EXPECT_EQ(device_.Log(), LogLines{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
