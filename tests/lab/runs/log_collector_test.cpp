#include "lab/runs/log_collector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <sstream>
#include <system_error>

#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const LogLine kLine{LOG_ERR, LOG_USER, "updater", "text"};

/// What a sender's syslog(3) does.
void Send(const PrivateRoot& root, const std::string& datagram, int flags = 0) {
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const int size = 1 << 20;
  ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  const std::string path = "/proc/self/fd/" + std::to_string(root.Directory()) + "/dev/log";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  Checked(::connect(socket.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), "connect", path);
  Checked(::send(socket.Get(), datagram.data(), datagram.size(), flags), "send", path);
}

TEST(ParseLogLine, ReadsWhatSyslogSends) {
  EXPECT_EQ(ParseLogLine("<11>Nov 21 13:17:00 updater: text"), kLine);
  EXPECT_EQ(ParseLogLine("<28>Nov  1 03:07:09 updater[123]: text"),
            (LogLine{LOG_WARNING, LOG_DAEMON, "updater", "text"}));
}

TEST(ParseLogLine, KeepsTheMessageAsItIs) {
  const std::string prefix = "<11>Nov 21 13:17:00 updater: ";
  for (const std::string& message :
       {std::string(), std::string(" a: b: c "), std::string("<3>x\n\ty"), std::string("\0\xff%s", 4)}) {
    EXPECT_EQ(ParseLogLine(prefix + message).message, message);
    EXPECT_EQ(ParseLogLine(prefix + message).ident, "updater");
  }
}

TEST(ParseLogLine, TakesOtherFormsForAMessage) {
  EXPECT_EQ(ParseLogLine(""), LogLine{});
  EXPECT_EQ(ParseLogLine("text"), (LogLine{0, 0, "", "text"}));
  EXPECT_EQ(ParseLogLine("<11"), (LogLine{0, 0, "", "<11"}));
  EXPECT_EQ(ParseLogLine("<>text"), (LogLine{0, 0, "", "<>text"}));
  EXPECT_EQ(ParseLogLine("<1x>text"), (LogLine{0, 0, "", "<1x>text"}));
  EXPECT_EQ(ParseLogLine("<99999999999>text"), (LogLine{0, 0, "", "<99999999999>text"}));
  EXPECT_EQ(ParseLogLine("<12>ident: text"), (LogLine{LOG_WARNING, LOG_USER, "", "ident: text"}));
  EXPECT_EQ(ParseLogLine("<12>Nov 21 13:17:00 text"), (LogLine{LOG_WARNING, LOG_USER, "", "text"}));
  EXPECT_EQ(ParseLogLine("<12>Nov x1 13:17:00 a: b"),
            (LogLine{LOG_WARNING, LOG_USER, "", "Nov x1 13:17:00 a: b"}));
  EXPECT_EQ(ParseLogLine("<12>Nov 21 13-17-00 a: b"),
            (LogLine{LOG_WARNING, LOG_USER, "", "Nov 21 13-17-00 a: b"}));
  EXPECT_EQ(ParseLogLine("<12>Nov 21 13:17:0x a: b"),
            (LogLine{LOG_WARNING, LOG_USER, "", "Nov 21 13:17:0x a: b"}));
}

TEST(LogLine, HasItsPriorityAsOneNumber) {
  EXPECT_EQ(kLine.priority(), 11);
}

TEST(LogLine, PrintsForAPerson) {
  std::ostringstream out;
  out << kLine;
  EXPECT_EQ(out.str(), "<11>updater: \"text\"");
}

TEST(LogCollector, GivesWhatWasSentInOrder) {
  PrivateRoot root;
  LogCollector collector(root);
  EXPECT_THAT(collector.Take(), IsEmpty());
  Send(root, "<11>one");
  Send(root, "<12>two");
  EXPECT_THAT(collector.Take(),
              ElementsAre(LogLine{3, LOG_USER, "", "one"}, LogLine{4, LOG_USER, "", "two"}));
  EXPECT_THAT(collector.Take(), IsEmpty());
}

TEST(LogCollector, KeepsWhatItDrained) {
  PrivateRoot root;
  LogCollector collector(root);
  for (int i = 0; i < 40; ++i) {
    Send(root, "<11>" + std::to_string(i));
    collector.Drain();
  }
  const auto lines = collector.Take();
  ASSERT_EQ(lines.size(), 40U);
  EXPECT_EQ(lines.back().message, "39");
}

TEST(LogCollector, TakesLongAndEmptyDatagramsWhole) {
  PrivateRoot root;
  LogCollector collector(root);
  const std::string text(256 * 1024, 'x');
  Send(root, text);
  Send(root, "");
  EXPECT_THAT(collector.Take(), ElementsAre(LogLine{0, 0, "", text}, LogLine{}));
}

TEST(LogCollector, KeepsNoMoreThanItsBound) {
  PrivateRoot root;
  LogCollector collector(root);
  const std::string text(250'000, 'x');
  for (int i = 0; i < 80; ++i) {
    Send(root, text);
    collector.Drain();
  }
  EXPECT_EQ(collector.Take().size(), 67U);  // of 16 MiB
  Send(root, "<11>next");
  EXPECT_EQ(collector.Take().size(), 1U);
}

TEST(LogCollector, LeavesNoRoomWhenItIsFilled) {
  PrivateRoot root;
  LogCollector collector(root);
  collector.Fill();
  EXPECT_THROW(Send(root, "<11>no room", MSG_DONTWAIT), std::system_error);
  collector.Drain();
  EXPECT_NO_THROW(Send(root, "<11>room", MSG_DONTWAIT));
}

TEST(LogCollector, HasASocketToPoll) {
  PrivateRoot root;
  LogCollector collector(root);
  pollfd source{collector.Socket(), POLLIN, 0};
  EXPECT_EQ(::poll(&source, 1, 0), 0);
  Send(root, "x");
  EXPECT_EQ(::poll(&source, 1, 0), 1);
}

TEST(LogCollector, StaysOutOfSnapshotsAndGoesAway) {
  PrivateRoot root;
  {
    const LogCollector collector(root);
    EXPECT_TRUE(root.Exists("/dev/log"));
    EXPECT_EQ(root.Snapshot(), Tree{});
    EXPECT_THROW(LogCollector second(root), std::system_error);
  }
  EXPECT_FALSE(root.Exists("/dev/log"));
}

TEST(LogCollector, LeavesAFileThatTookItsPlace) {
  PrivateRoot root;
  {
    const LogCollector collector(root);
    root.Remove("/dev/log");
    root.Write("/dev/log", "a file");
  }
  EXPECT_EQ(root.Read("/dev/log"), "a file");
}

TEST(LogCollector, WorksHoweverLongTheRootsPathIs) {
  const lab_test::TemporaryFolder temporary;
  PrivateRoot root = lab_test::RootWithLongPath(temporary);
  LogCollector collector(root);
  Send(root, "<11>far away");
  EXPECT_THAT(collector.Take(), ElementsAre(LogLine{3, LOG_USER, "", "far away"}));
}

}  // namespace
}  // namespace lab
