// What arrives at the daemon, held against what the C library's own syslog(3) sends there.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <syslog.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/log_daemon.h"

namespace KELP::Wifi {
namespace {

using Messages = std::vector<std::string>;
using namespace std::string_literals;

class LogBytes : public ::testing::Test {
 protected:
  ~LogBytes() override { ::closelog(); }

  /// What arrives of `send`, once between two calls of `reference` from which the same arrives: all three
  /// then have the same second in them.
  template <typename Send, typename Reference>
  void ExpectSame(Send send, Reference reference, int expected_count = 1) {
    for (int attempt = 0; attempt < 100; ++attempt) {
      reference();
      const Messages first = daemon_.Datagrams();
      send();
      const Messages sent = daemon_.Datagrams();
      reference();
      if (daemon_.Datagrams() != first) continue;
      EXPECT_EQ(static_cast<int>(first.size()), expected_count);
      EXPECT_TRUE(sent == first) << ::testing::PrintToString(sent).substr(0, 200) << "\ninstead of\n"
                                 << ::testing::PrintToString(first).substr(0, 200);
      return;
    }
    FAIL() << "the second changed with every message";
  }
  void ExpectSameText(int priority, const std::string& text) {
    ExpectSame([&] { LogFormatted(priority, "%s", text.c_str()); },
               [&] { ::syslog(priority, "%s", text.c_str()); });
  }

  lab::PrivateRoot device_;
  lab::InRoot inside_{device_};
  testing_support::LogDaemon daemon_{SOCK_DGRAM};
};

TEST_F(LogBytes, AreThoseOfSyslogForEveryText) {
  for (const std::string& text :
       {"text"s, ""s, " "s, "a\nb\n"s, "\n"s, "%s%n%d%"s, "caf\xE9\xFF\x01\t"s, ": [1]: <3>"s}) {
    ExpectSameText(LOG_ERR, text);
    ExpectSameText(LOG_WARNING, text);
  }
}

TEST_F(LogBytes, AreThoseOfSyslogForEveryPriority) {
  for (int severity = LOG_EMERG; severity <= LOG_DEBUG; ++severity) ExpectSameText(severity, "text");
}

TEST_F(LogBytes, AreThoseOfSyslogForFormatsWithArguments) {
  ExpectSame(
      [] { Log(LOG_ERR, "%s:%d %s, %d%% of %.*s", 954, "words", -7, 3, "letters"); },
      [] { ::syslog(LOG_ERR, "%s:%d %s, %d%% of %.*s", "kelpwifiupdater", 954, "words", -7, 3, "letters"); });
}

TEST_F(LogBytes, AreThoseOfSyslogForEveryLengthThatTheSocketTakes) {
  for (const std::size_t length : {900U, 1000U, 1022U, 1023U, 1024U, 1025U, 2048U, 65'535U, 65'536U, 131'071U,
                                   131'072U, 131'073U, 200'000U}) {
    ExpectSameText(LOG_ERR, std::string(length, 'w'));
  }
}

TEST_F(LogBytes, AreCutAt128KiBOfTextWhereTheSocketDoesNotTakeAll) {
  const std::string text(5'000'000, 'w');
  ExpectSame([&] { LogFormatted(LOG_ERR, "%s", text.c_str()); },
             [&] { ::syslog(LOG_ERR, "%.131072s", text.c_str()); });
}

TEST_F(LogBytes, HaveTheLocalTime) {
  for (const char* zone : {"AHEAD-13:45", "BEHIND+11:30", "UTC0"}) {
    ::setenv("TZ", zone, 1);
    ::tzset();
    ExpectSameText(LOG_ERR, zone);
  }
  ::unsetenv("TZ");
  ::tzset();
}

TEST_F(LogBytes, HaveTheProgramsShortName) {
  char* const name = program_invocation_short_name;
  std::string other = "another-name";
  program_invocation_short_name = other.data();
  ExpectSameText(LOG_ERR, "text");
  program_invocation_short_name = name;
}

TEST_F(LogBytes, AreNoneForAFormatThatFails) {
  const wchar_t no_character[] = {static_cast<wchar_t>(0x7fffffff), L'\0'};
  ExpectSame([&] { LogFormatted(LOG_ERR, "a %ls", no_character); },
             [&] { ::syslog(LOG_ERR, "a %ls", no_character); }, 0);
}

TEST(LogStreamBytes, AreThoseOfSyslogWithItsEnd) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  const testing_support::LogDaemon daemon(SOCK_STREAM);
  const std::string text(5000, 'w');
  for (int attempt = 0; attempt < 100; ++attempt) {
    // Each on a connection of its own.
    ::syslog(LOG_ERR, "%s", "one");
    ::syslog(LOG_WARNING, "%s", text.c_str());
    ::closelog();
    const Messages first = daemon.Streams();
    LogFormatted(LOG_ERR, "%s", "one");
    LogFormatted(LOG_WARNING, "%s", text.c_str());
    const Messages sent = daemon.Streams();
    ::syslog(LOG_ERR, "%s", "one");
    ::syslog(LOG_WARNING, "%s", text.c_str());
    ::closelog();
    if (daemon.Streams() != first) continue;
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent, first);
    EXPECT_EQ(sent[0].back(), '\0');
    return;
  }
  FAIL() << "the second changed with every message";
}

}  // namespace
}  // namespace KELP::Wifi
