#include "base/log_socket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/log_daemon.h"
#include "tests/support/hang_guard.h"

namespace KELP::Wifi {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::LogDaemon;
using namespace std::chrono_literals;
using namespace std::string_literals;

class LogSocket : public ::testing::Test {
 protected:
  /// A message may wait for `limit`, all of a test together for ten seconds.
  LogResult Send(const std::string& message, OutputWait::Time limit = 2s) {
    OutputWait wait(budget_, limit);
    return SendToLog(message.c_str(), message.size(), wait);
  }

  /// Puts a daemon that has just been started in the place of the one before.
  const LogDaemon& Start(int type) {
    daemon_.reset();
    return daemon_.emplace(type);
  }

  lab::PrivateRoot device_;
  lab::InRoot inside_{device_};
  std::optional<LogDaemon> daemon_;
  OutputWaitBudget budget_{10s};
  testing_support::HangGuard guard_{"sending to the log"};
};

TEST_F(LogSocket, DatagramsAreTheMessagesInOrder) {
  const LogDaemon& daemon = Start(SOCK_DGRAM);
  Send("one");
  Send("");
  Send("two\0three"s);
  EXPECT_THAT(daemon.Datagrams(), ElementsAre("one", "", "two\0three"s));
}

TEST_F(LogSocket, StreamHasAMessageUpToEachNUL) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  Send("one");
  Send("");
  Send("two");
  EXPECT_THAT(daemon.Streams(), ElementsAre("one\0\0two\0"s));
}

TEST_F(LogSocket, RestartedDaemonOfEitherKindIsFoundAgain) {
  for (const int before : {SOCK_DGRAM, SOCK_STREAM}) {
    for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
      Start(before);
      Send("to the one before");
      const LogDaemon& daemon = Start(type);
      Send("one");
      Send("two");
      if (type == SOCK_DGRAM) {
        EXPECT_THAT(daemon.Datagrams(), ElementsAre("one", "two"));
      } else {
        EXPECT_THAT(daemon.Streams(), ElementsAre("one\0two\0"s));
      }
    }
  }
}

TEST_F(LogSocket, ClosedConnectionIsMadeAnew) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  Send("one");
  EXPECT_THAT(daemon.Streams(), ElementsAre("one\0"s));  // and closes it
  Send("two");
  EXPECT_THAT(daemon.Streams(), ElementsAre("two\0"s));
}

TEST_F(LogSocket, MessagesWithoutADaemonAreLostAndALaterOneArrives) {
  Start(SOCK_DGRAM);
  daemon_.reset();
  Send("lost");
  EXPECT_THAT(Start(SOCK_DGRAM).Datagrams(), IsEmpty());
  Send("found");
  EXPECT_THAT(daemon_->Datagrams(), ElementsAre("found"));
}

/// Calls `read` after some time, and again whenever it returns, until it has been called once more after
/// `send` is done.
template <typename Read, typename Send>
void ReadLate(Read read, Send send, std::chrono::milliseconds asleep = 100ms) {
  std::atomic<bool> done = false;
  std::thread reader([&] {
    std::this_thread::sleep_for(asleep);
    for (bool last = false; !last;) {
      last = done;
      read();
    }
  });
  send();
  done = true;
  reader.join();
}

TEST_F(LogSocket, DaemonThatReadsLateGetsEverything) {
  const LogDaemon& daemon = Start(SOCK_DGRAM);
  std::vector<std::string> sent;
  for (int i = 0; i < 1000; ++i)
    sent.push_back(std::to_string(i) + std::string(i % 100 == 0 ? 131'072 : 0, 'x'));
  std::vector<std::string> got;
  ReadLate([&] { std::ranges::move(daemon.Datagrams(), std::back_inserter(got)); },
           [&] {
             for (const std::string& message : sent) EXPECT_EQ(Send(message), LogResult::Taken);
           });
  EXPECT_TRUE(got == sent) << got.size();
}

TEST_F(LogSocket, DaemonOfStreamsThatReadsLateGetsEverything) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  std::string sent;
  std::string got;
  lab::Descriptor connection;
  ReadLate([&] { got += daemon.ReadFrom(connection); },
           [&] {
             for (int i = 0; i < 10; ++i) {
               const std::string message(130'000, static_cast<char>('a' + i));
               sent += message + '\0';
               EXPECT_EQ(Send(message), LogResult::Taken);
             }
           });
  EXPECT_TRUE(got == sent) << got.size();
}

// The kernel wakes a sender only once most of its buffer has been read.
TEST_F(LogSocket, LongMessagesAreAllTakenByADaemonThatReadsSlowly) {
  for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
    const LogDaemon& daemon = Start(type);
    const std::string message(25'000, 'm');
    lab::Descriptor connection;
    ReadLate(
        [&] {
          std::this_thread::sleep_for(400ms);
          daemon.ReadOne(connection, message.size() + 1);
        },
        [&] {
          for (int i = 0; i < 14; ++i) EXPECT_EQ(Send(message), LogResult::Taken) << type << ' ' << i;
        });
  }
}

TEST_F(LogSocket, DaemonThatNeverReadsCostsTheWaitAndTheMessagesBehindIt) {
  const LogDaemon& daemon = Start(SOCK_DGRAM);
  while (Send("unread", 50ms) == LogResult::Taken) {
  }
  EXPECT_LT(budget_.Remaining(), 10s);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(Send("lost", 0s), LogResult::NoRoom);
  EXPECT_THAT(daemon.Datagrams(), ::testing::Each("unread"));
  EXPECT_EQ(Send("found", 0s), LogResult::Taken);
  EXPECT_THAT(daemon.Datagrams(), ElementsAre("found"));
}

TEST_F(LogSocket, DaemonOfStreamsThatNeverReadsCostsTheWaitAndTheMessagesBehindIt) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  const std::string line(1000, 'u');
  while (Send(line, 50ms) == LogResult::Taken) {
  }
  std::string whole = daemon.Streams().at(0);
  EXPECT_GT(whole.size(), 10'000U);
  // Only the last line before the end of the connection may be a part.
  for (; whole.size() > line.size(); whole.erase(0, line.size() + 1)) {
    ASSERT_TRUE(whole.starts_with(line + '\0'));
  }
  EXPECT_EQ(whole.find_first_not_of('u'), std::string::npos);
  daemon.Streams();
  EXPECT_EQ(Send("found"), LogResult::Taken);
  EXPECT_THAT(daemon.Streams(), ElementsAre("found\0"s));
}

TEST_F(LogSocket, MessageThatADaemonOfStreamsTakesInPartEndsItsConnection) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  EXPECT_EQ(Send(std::string(1'000'000, 't'), 50ms), LogResult::NoRoom);
  EXPECT_EQ(Send("next", 0s), LogResult::Taken);
  const std::vector<std::string> connections = daemon.Streams();
  ASSERT_EQ(connections.size(), 2U);
  EXPECT_GT(connections[0].size(), 1000U);
  EXPECT_EQ(connections[0].find_first_not_of('t'), std::string::npos);
  EXPECT_EQ(connections[1], "next\0"s);
}

TEST_F(LogSocket, MessageIsNotWaitedForLongerBecauseTheDaemonReadsPartOfIt) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  lab::Descriptor connection;
  ReadLate(
      [&] {
        std::this_thread::sleep_for(10ms);
        daemon.ReadOne(connection, 64UL * 1024);
      },
      [&] { EXPECT_EQ(Send(std::string(30'000'000, 'p'), 200ms), LogResult::NoRoom); });
}

TEST_F(LogSocket, DaemonOfStreamsThatTakesNoConnectionCostsTheWaitAndTheMessages) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  const std::vector<lab::Descriptor> waiting = daemon.FillBacklog();
  EXPECT_EQ(Send("lost", 50ms), LogResult::NoRoom);
  EXPECT_LT(budget_.Remaining(), 10s);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(Send("lost", 0s), LogResult::NoRoom);
  EXPECT_THAT(daemon.Streams(), ::testing::Each(""));
  EXPECT_EQ(Send("found", 0s), LogResult::Taken);
  EXPECT_THAT(daemon.Streams(), ElementsAre("found\0"s));
}

TEST_F(LogSocket, DaemonOfStreamsThatTakesConnectionsLateGetsEverything) {
  const LogDaemon& daemon = Start(SOCK_STREAM);
  const std::vector<lab::Descriptor> waiting = daemon.FillBacklog();
  std::string got;
  std::vector<lab::Descriptor> connections;  // open until all has been sent
  ReadLate(
      [&] {
        while (true) {  // the last one that waits may be the one that sends
          lab::Descriptor next;
          got += daemon.ReadFrom(next);
          if (!next.IsOpen()) break;
          connections.push_back(std::move(next));
        }
        for (lab::Descriptor& connection : connections) got += daemon.ReadFrom(connection);
      },
      [&] { EXPECT_EQ(Send("late"), LogResult::Taken); }, 1300ms);
  EXPECT_EQ(got, "late\0"s);
}

TEST_F(LogSocket, MessagesAreTooLongForDatagramsButNeverForStreams) {
  const std::string message(5'000'000, 'l');
  Start(SOCK_DGRAM);
  EXPECT_EQ(Send(message), LogResult::TooLong);
  EXPECT_THAT(daemon_->Datagrams(), IsEmpty());
  const LogDaemon& daemon = Start(SOCK_STREAM);
  std::string got;
  lab::Descriptor connection;
  ReadLate([&] { got += daemon.ReadFrom(connection); }, [&] { EXPECT_EQ(Send(message), LogResult::Taken); });
  EXPECT_TRUE(got == message + '\0') << got.size();
}

TEST_F(LogSocket, MessagesWithoutADaemonDoNotWait) {
  EXPECT_EQ(Send("heard"), LogResult::Taken);
  Start(SOCK_DGRAM);
  daemon_.reset();
  EXPECT_EQ(Send("lost"), LogResult::Lost);
  EXPECT_EQ(budget_.Remaining(), 10s);
}

/// The sockets of this process that a program it starts would get.
int InheritedSockets() {
  int count = 0;
  for (int descriptor = 0; descriptor < 256; ++descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISSOCK(status.st_mode)) continue;
    if ((::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0) ++count;
  }
  return count;
}

TEST_F(LogSocket, IsInheritedByNobody) {
  const int before = InheritedSockets();
  for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
    Start(type);
    Send("one");
    EXPECT_EQ(InheritedSockets(), before);
  }
}

}  // namespace
}  // namespace KELP::Wifi
