#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Ended {
  int status;
  std::vector<std::string> writes;  // what each write of the program wrote
};

constexpr int kNoTrial = 125;
constexpr int kNotStarted = 124;

/// Runs tamper with `arguments` before /bin/cat, which gets `input`.
Ended RunOverCat(std::vector<std::string> arguments, const std::string& input) {
  arguments.insert(arguments.begin(), TAMPER_PATH);
  arguments.emplace_back("/bin/cat");
  std::vector<char*> words;
  for (std::string& argument : arguments) words.push_back(argument.data());
  words.push_back(nullptr);

  std::array<int, 2> in{};
  std::array<int, 2> out{};
  EXPECT_EQ(::pipe(in.data()), 0);
  EXPECT_EQ(::pipe2(out.data(), O_DIRECT), 0);  // keeps the writes apart
  // Before there is anybody to read it, who might be killed first.
  EXPECT_EQ(::write(in[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::dup2(in[0], STDIN_FILENO);
    ::dup2(out[1], STDOUT_FILENO);
    for (const int end : {in[0], in[1], out[0], out[1]}) ::close(end);
    ::execv(words[0], words.data());
    ::_exit(127);
  }
  ::close(in[0]);
  ::close(out[1]);
  ::close(in[1]);
  Ended ended{};
  std::array<char, 256> buffer{};
  for (ssize_t got = 0; (got = ::read(out[0], buffer.data(), buffer.size())) > 0;) {
    ended.writes.emplace_back(buffer.data(), static_cast<std::size_t>(got));
  }
  ::close(out[0]);
  EXPECT_EQ(::waitpid(pid, &ended.status, 0), pid);
  return ended;
}

bool EndedBySignal(const Ended& ended, int signal) {
  return WIFSIGNALED(ended.status) && WTERMSIG(ended.status) == signal;
}

bool EndedWith(const Ended& ended, int status) {
  return WIFEXITED(ended.status) && WEXITSTATUS(ended.status) == status;
}

TEST(Tamper, TellsWhenTheOrderWasNotCarriedOut) {
  for (const std::vector<std::string>& order : {std::vector<std::string>{"shorten", "read", "100000", "1"},
                                                {"shorten", "write", "1", "100000"},
                                                {"shorten-from", "100000", "1"},
                                                {"refuse-memory", "100000"},
                                                {"kill-before", "100000"},
                                                {"signal", "100000", "15"}}) {
    const Ended ended = RunOverCat(order, "some text");
    EXPECT_TRUE(EndedWith(ended, kNoTrial)) << order.front();
    EXPECT_THAT(ended.writes, ElementsAre("some text")) << order.front();
  }
}

TEST(Tamper, ShortensOneTransfer) {
  const Ended ended = RunOverCat({"shorten", "write", "1", "1"}, "some text");
  EXPECT_TRUE(EndedWith(ended, 0));
  EXPECT_THAT(ended.writes, ElementsAre("s", "ome text"));
}

TEST(Tamper, ShortensAllTransfersFromACallOn) {
  // Which call of cat is the first behind its loader's differs from system to system.
  const std::vector<std::string> trickled{"so", "me", " t", "ex", "t"};
  bool is_found = false;
  for (int index = 2; index < 300 && !is_found; ++index) {
    const Ended ended = RunOverCat({"shorten-from", std::to_string(index), "2"}, "some text");
    is_found = EndedWith(ended, 0) && ended.writes == trickled;
  }
  EXPECT_TRUE(is_found);
}

TEST(Tamper, RefusesMemory) {
  // A loader that gets none cannot load; it may end by a status or by a signal.
  const Ended ended = RunOverCat({"refuse-memory", "2"}, "some text");
  EXPECT_FALSE(EndedWith(ended, 0));
  EXPECT_FALSE(EndedWith(ended, kNoTrial));
  EXPECT_THAT(ended.writes, IsEmpty());
}

TEST(Tamper, KillsBeforeACall) {
  const Ended ended = RunOverCat({"kill-before", "2"}, "some text");
  EXPECT_TRUE(EndedBySignal(ended, SIGKILL));
  EXPECT_THAT(ended.writes, IsEmpty());
}

TEST(Tamper, KillsAfterACall) {
  const Ended ended = RunOverCat({"kill-after", "2"}, "some text");
  EXPECT_TRUE(EndedBySignal(ended, SIGKILL));
  EXPECT_THAT(ended.writes, IsEmpty());
}

TEST(Tamper, SendsASignalAtACall) {
  for (const int signal : {SIGTERM, SIGHUP}) {
    const Ended ended = RunOverCat({"signal", "2", std::to_string(signal)}, "some text");
    EXPECT_TRUE(EndedBySignal(ended, signal)) << signal;
    EXPECT_THAT(ended.writes, IsEmpty());
  }
}

TEST(Tamper, TellsALimitedProgramThatHadNotBegun) {
  // cat never ignores SIGPIPE, so it has not begun, as far as tamper can tell.
  EXPECT_TRUE(EndedWith(RunOverCat({"limit", "NOFILE", "100"}, "some text"), kNotStarted));
  const Ended ended = RunOverCat({"limit", "NOFILE", "3"}, "some text");  // none left for a library
  EXPECT_TRUE(EndedWith(ended, kNotStarted));
  EXPECT_THAT(ended.writes, IsEmpty());
}

TEST(Tamper, RefusesAnUnknownOrder) {
  EXPECT_TRUE(EndedWith(RunOverCat({"limit", "TIME", "2"}, ""), kNoTrial));
  EXPECT_TRUE(EndedWith(RunOverCat({"delay", "2"}, ""), kNoTrial));
}

}  // namespace
