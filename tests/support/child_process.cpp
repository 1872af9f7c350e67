#include "tests/support/child_process.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"
#include "tests/support/hang_guard.h"

namespace testing_support {
namespace {

constexpr unsigned kNobody = 65534;

void BecomeOrdinaryUser() {
  lab::Checked(::setgroups(0, nullptr), "drop", "groups");
  lab::Checked(::setresgid(kNobody, kNobody, kNobody), "become", "nogroup");
  lab::Checked(::setresuid(kNobody, kNobody, kNobody), "become", "nobody");
  // A process that changes its user may not be looked into, its own user namespace settings included.
  lab::Checked(::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0), "make", "the process dumpable");
}

}  // namespace

std::string InChild(const std::function<std::string()>& operation) {
  std::array<int, 2> ends{};
  lab::Checked(::pipe2(ends.data(), O_CLOEXEC), "make", "a pipe");
  const lab::Descriptor reading(ends[0]);
  lab::Descriptor writing(ends[1]);
  const pid_t child = lab::Checked(::fork(), "fork", "");
  if (child == 0) {
    std::string answer;
    try {
      answer = operation();
    } catch (const std::exception& error) {
      answer = error.what();
    }
    lab::WriteAll(writing.Get(), answer, "a pipe");
    ::_exit(0);
  }
  writing.Close();
  std::string answer = lab::ReadAll(reading.Get(), "a pipe");
  ::waitpid(child, nullptr, 0);
  return answer;
}

void ExpectInChild(const std::function<void()>& body) {
  EXPECT_EQ(InChild([&] {
              const HangGuard guard("the body in the child process");
              body();
              return std::string(::testing::Test::HasFailure() ? "failed" : "passed");
            }),
            "passed");
}

std::string AsOrdinaryUser(const std::function<std::string()>& operation) {
  return InChild([&] {
    BecomeOrdinaryUser();
    return operation();
  });
}

bool MayBecomeOrdinaryUser() {
  // "0 0 4294967295" outside of user namespaces.
  std::ifstream map("/proc/self/uid_map");
  unsigned long inside = 0;
  unsigned long outside = 0;
  unsigned long count = 0;
  map >> inside >> outside >> count;
  return ::geteuid() == 0 && count > kNobody;
}

ShellResult Shell(const std::string& command) {
  ShellResult result;
  std::FILE* stream = ::popen(("(" + command + ") 2>&1").c_str(), "r");
  if (stream == nullptr) lab::ThrowErrno("run", command);
  result.output = lab::ReadAll(::fileno(stream), command);
  const int status = ::pclose(stream);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

}  // namespace testing_support
