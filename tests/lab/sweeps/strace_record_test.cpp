#include "lab/sweeps/strace_record.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using ::testing::ElementsAre;

TEST(ParseRecord, SplitsACallIntoNameArgumentsAndResult) {
  const auto calls =
      ParseRecord(R"(17 newfstatat(AT_FDCWD, "\x2f\x65", {st_mode=S_IFREG|0644, st_size=7, ...}, 0) = 0)");
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].name, "newfstatat");
  EXPECT_THAT(calls[0].arguments,
              ElementsAre("AT_FDCWD", R"("\x2f\x65")", "{st_mode=S_IFREG|0644, st_size=7, ...}", "0"));
  EXPECT_EQ(calls[0].result, 0);
  EXPECT_EQ(calls[0].error, "");
}

TEST(ParseRecord, KnowsErrorsAndInjectedOnes) {
  const auto calls = ParseRecord(
      "17 read(3, 0x55, 4096) = -1 EIO (Input/output error) (INJECTED)\n"
      "17 close(3)                          = 0\n");
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].result, -1);
  EXPECT_EQ(calls[0].error, "EIO");
  EXPECT_TRUE(calls[0].injected);
  EXPECT_FALSE(calls[1].injected);
}

TEST(ParseRecord, CountsTheCallsOfEachName) {
  const auto calls = Calls({"close(3) = 0", "read(3, '', 9) = 0", "close(4) = 0"});
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_EQ(calls[0].ordinal, 1);
  EXPECT_EQ(calls[1].ordinal, 1);
  EXPECT_EQ(calls[2].ordinal, 2);
}

TEST(ParseRecord, ReadsCallsWithoutArgumentsAndWithoutResult) {
  const auto calls = ParseRecord("17 getpid() = 17\n17 exit_group(0) = ?\n17 +++ exited with 0 +++\n");
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_THAT(calls[0].arguments, ElementsAre());
  EXPECT_EQ(calls[0].result, 17);
  EXPECT_EQ(calls[1].result, 0);
}

TEST(ParseRecord, ReadsAddresses) {
  EXPECT_EQ(ParseRecord("17 brk(NULL) = 0x555500001000\n")[0].result, 0x555500001000);
}

TEST(ParseRecord, RefusesWhatIsNoCall) {
  EXPECT_THROW(ParseRecord("strace: cannot start\n"), std::runtime_error);
  EXPECT_THROW(ParseRecord("17 read(3, "), std::runtime_error);
}

TEST(FirstCallOfMain, IsWhereTheStandardStreamsAreSecured) {
  const auto calls =
      Calls({"execve('/x', [], 0x7f) = 0", "rt_sigaction(SIGRT_1, {}, NULL, 8) = 0", "brk(NULL) = 0x5",
             "poll([{fd=0, events=0}], 1, 0) = 0", "rt_sigaction(SIGPIPE, {}, {}, 8) = 0"});
  EXPECT_EQ(FirstCallOfMain(calls), 3U);
}

TEST(FirstCallOfMain, IsNotGuessed) {
  EXPECT_THROW(FirstCallOfMain(Calls({"execve('/x', [], 0x7f) = 0", "exit_group(0) = ?"})),
               std::runtime_error);
}

TEST(SubjectOf, IsWhatStaysTheSameInEveryRun) {
  const auto calls =
      Calls({"openat(AT_FDCWD, '/etc/info', O_RDONLY) = 3", "read(3, 'text', 512) = 4",
             "rename('/a', '/b') = 0", "brk(0x5555) = 0x5555", "getrandom('bytes', 5, 0) = 5"});
  EXPECT_EQ(SubjectOf(calls[0]), "/etc/info ");
  EXPECT_EQ(SubjectOf(calls[1]), "3");
  EXPECT_EQ(SubjectOf(calls[2]), "/a /b ");
  EXPECT_EQ(SubjectOf(calls[3]), "");
  EXPECT_EQ(SubjectOf(calls[4]), "");
}

TEST(QuotedBytes, GivesEveryByteBack) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(QuotedBytes(Hexadecimal(bytes)), bytes);
}

TEST(QuotedBytes, RefusesACutString) {
  EXPECT_THROW(QuotedBytes(R"("\x2f"...)"), std::runtime_error);
}

TEST(QuotedBytes, RefusesWhatIsNoString) {
  EXPECT_THROW(QuotedBytes("0x7ffd"), std::runtime_error);
  EXPECT_THROW(QuotedBytes("\"plain\""), std::runtime_error);
}

}  // namespace
}  // namespace lab::sweeps
