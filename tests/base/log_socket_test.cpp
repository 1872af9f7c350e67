#include "base/log_socket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/wait_budget.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/log_daemon.h"
#include "tests/support/child_process.h"

namespace KELP::Wifi {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::LogDaemon;
using namespace std::chrono_literals;
using namespace std::string_literals;

class LogSocket : public ::testing::Test {
 protected:
  static void Send(const std::string& message) { SendToLog(message.c_str(), message.size()); }

  /// Puts a daemon that has just been started in the place of the one before.
  const LogDaemon& Start(int type) {
    daemon_.reset();
    return daemon_.emplace(type);
  }

  lab::PrivateRoot device_;
  lab::InRoot inside_{device_};
  std::optional<LogDaemon> daemon_;
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

TEST_F(LogSocket, DaemonThatReadsLateGetsEverything) {
  testing_support::ExpectInChild([&] {
    const LogDaemon& daemon = Start(SOCK_DGRAM);
    std::vector<std::string> got;
    std::atomic<bool> done = false;
    std::thread reader([&] {
      std::this_thread::sleep_for(100ms);
      for (bool last = false; !last;) {
        last = done;
        for (std::string& message : daemon.Datagrams()) got.push_back(std::move(message));
      }
    });
    std::vector<std::string> sent;
    for (int i = 0; i < 1000; ++i)
      sent.push_back(std::to_string(i) + std::string(i % 100 == 0 ? 131'072 : 0, 'x'));
    for (const std::string& message : sent) Send(message);
    done = true;
    reader.join();
    EXPECT_TRUE(got == sent) << got.size();
  });
}

TEST_F(LogSocket, DaemonOfStreamsThatReadsLateGetsEverything) {
  testing_support::ExpectInChild([&] {
    const LogDaemon& daemon = Start(SOCK_STREAM);
    std::string got;
    std::thread reader([&] {
      std::this_thread::sleep_for(100ms);
      const FileDescriptor connection(::accept4(daemon.Socket(), nullptr, nullptr, SOCK_CLOEXEC));
      std::string buffer(1 << 20, '\0');
      while (!got.ends_with("last\0"s)) {
        const ssize_t size = ::recv(connection.Get(), buffer.data(), buffer.size(), 0);
        if (size <= 0) return;
        got.append(buffer, 0, static_cast<std::size_t>(size));
      }
    });
    std::string sent;
    for (int i = 0; i < 10; ++i) {
      const std::string message(130'000, static_cast<char>('a' + i));
      sent += message + '\0';
      Send(message);
    }
    Send("last");
    reader.join();
    EXPECT_TRUE(got == sent + "last\0"s) << got.size();
  });
}

/// Sends for as long as there is patience.
template <typename Send>
void WearOut(Send send) {
  while (OutputWaitBudget().Remaining() > 0s) send();
}

TEST_F(LogSocket, DaemonThatNeverReadsCostsThePatienceAndItsLines) {
  testing_support::ExpectInChild([&] {
    const LogDaemon& daemon = Start(SOCK_DGRAM);
    WearOut([] { Send("unread"); });
    for (int i = 0; i < 1000; ++i) Send("lost");
    EXPECT_THAT(daemon.Datagrams(), ::testing::Each("unread"));
    Send("found");
    EXPECT_THAT(daemon.Datagrams(), ElementsAre("found"));
  });
}

TEST_F(LogSocket, DaemonOfStreamsThatNeverReadsCostsThePatienceAndItsLines) {
  testing_support::ExpectInChild([&] {
    const LogDaemon& daemon = Start(SOCK_STREAM);
    const std::string line(1000, 'u');
    WearOut([&] { Send(line); });
    for (int i = 0; i < 1000; ++i) Send("lost");
    std::string whole = daemon.Streams().at(0);
    EXPECT_GT(whole.size(), 10'000U);
    // Only the last line before the end of the connection may be a part.
    for (; whole.size() > line.size(); whole.erase(0, line.size() + 1)) {
      ASSERT_TRUE(whole.starts_with(line + '\0'));
    }
    EXPECT_EQ(whole.find_first_not_of('u'), std::string::npos);
    daemon.Streams();
    Send("found");
    EXPECT_THAT(daemon.Streams(), ElementsAre("found\0"s));
  });
}

TEST_F(LogSocket, DaemonOfStreamsThatTakesNoConnectionCostsThePatienceAndItsLines) {
  testing_support::ExpectInChild([&] {
    const LogDaemon& daemon = Start(SOCK_STREAM);
    std::vector<FileDescriptor> waiting;  // until there is no room for another
    const sockaddr address{AF_UNIX, "/dev/log"};
    do {
      waiting.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    } while (::connect(waiting.back().Get(), &address, sizeof address) == 0);
    ASSERT_EQ(errno, EAGAIN);
    WearOut([] { Send("lost"); });
    for (int i = 0; i < 1000; ++i) Send("lost");
    EXPECT_THAT(daemon.Streams(), ::testing::Each(""));
    Send("found");
    EXPECT_THAT(daemon.Streams(), ElementsAre("found\0"s));
  });
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
