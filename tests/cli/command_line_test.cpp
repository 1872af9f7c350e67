#include "cli/command_line.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "base/unique_fd.h"
#include "tests/support/captured_streams.h"

namespace KELP::Wifi::Updater {
namespace {

/// What is written to standard output, a text for each write: a socket keeps them apart.
std::vector<std::string> WritesOf(int count, const char* const* arguments) {
  std::array<int, 2> ends{};
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  const UniqueFd receiving(ends[0]);
  UniqueFd sending(ends[1]);
  {
    const testing_support::CapturedStream out(STDOUT_FILENO);
    ::dup2(sending.Get(), STDOUT_FILENO);
    EXPECT_EQ(RunCommandLine(count, arguments), 1);
  }
  sending.Close();
  std::vector<std::string> writes;
  std::array<char, 4096> piece{};
  for (ssize_t size = 0; (size = ::recv(receiving.Get(), piece.data(), piece.size(), 0)) > 0;) {
    writes.emplace_back(piece.data(), static_cast<std::size_t>(size));
  }
  return writes;
}

TEST(CommandLine, UsageIsWrittenLineByLineAndNamesTheProgramWhateverItWasCalledAs) {
  const std::vector<std::string> usage{
      "Usage: kelpwifiupdater option\n", "  Options: \n",
      "    --update-config oldBuildNumber     update config from old build number to current.\n", "\n"};
  const std::array<const char*, 2> other{"/usr/sbin/other", nullptr};
  EXPECT_EQ(WritesOf(1, other.data()), usage);
  EXPECT_EQ(WritesOf(0, nullptr), usage);  // without even a name
}

}  // namespace
}  // namespace KELP::Wifi::Updater
