#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <vector>

namespace {

struct Ended {
  int status;
  std::string out;
};

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
  EXPECT_EQ(::pipe(out.data()), 0);
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
  EXPECT_EQ(::write(in[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
  ::close(in[1]);
  Ended ended{};
  std::array<char, 256> buffer{};
  for (ssize_t got = 0; (got = ::read(out[0], buffer.data(), buffer.size())) > 0;) {
    ended.out.append(buffer.data(), static_cast<std::size_t>(got));
  }
  ::close(out[0]);
  EXPECT_EQ(::waitpid(pid, &ended.status, 0), pid);
  return ended;
}

TEST(Tamper, LetsAnUntouchedProgramBe) {
  const Ended ended = RunOverCat({"shorten", "read", "100000", "1"}, "some text");
  EXPECT_TRUE(WIFEXITED(ended.status));
  EXPECT_EQ(WEXITSTATUS(ended.status), 0);
  EXPECT_EQ(ended.out, "some text");
}

TEST(Tamper, ShortenedTransfersLoseNothing) {
  // The first write of cat; what was not written is written by the next.
  const Ended ended = RunOverCat({"shorten", "write", "1", "1"}, "some text");
  EXPECT_EQ(WEXITSTATUS(ended.status), 0);
  EXPECT_EQ(ended.out, "some text");
}

TEST(Tamper, KillsBeforeACall) {
  const Ended ended = RunOverCat({"kill-before", "2"}, "some text");
  EXPECT_TRUE(WIFSIGNALED(ended.status));
  EXPECT_EQ(WTERMSIG(ended.status), SIGKILL);
  EXPECT_EQ(ended.out, "");
}

TEST(Tamper, KillsAfterACall) {
  const Ended ended = RunOverCat({"kill-after", "2"}, "some text");
  EXPECT_TRUE(WIFSIGNALED(ended.status));
  EXPECT_EQ(WTERMSIG(ended.status), SIGKILL);
}

TEST(Tamper, RefusesAnUnknownOrder) {
  const Ended ended = RunOverCat({"delay", "2"}, "");
  EXPECT_TRUE(WIFEXITED(ended.status));
  EXPECT_EQ(WEXITSTATUS(ended.status), 125);
}

}  // namespace
