#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <string>

#include "base/log.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/log_daemon.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_calls.h"
#include "tests/support/hang_guard.h"

namespace KELP::Wifi {
namespace {

std::optional<std::time_t> fixed_time;
bool has_local_time = true;

TEST(LogFailures, LinesOfEveryLengthArriveWholeWhereThereIsNoMemory) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  for (const std::size_t length : {10U, 5000U, 100'000U}) {
    const std::string word(length, 'w');
    {
      const testing_support::FailingAllocation failing;
      Log(LOG_ERR, "%s:%d Invalid pmf mode: %s, select disabled.", 776, word.c_str());
      EXPECT_EQ(testing_support::FailingAllocation::Failed(), 0);
    }
    const auto lines = inside.Log();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].message, "kelpwifiupdater:776 Invalid pmf mode: " + word + ", select disabled.");
  }
}

TEST(LogFailures, LineThatCannotBeFormattedIsLostAndNothingElse) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  {
    testing_support::FailingCalls calls;
    calls.Fail("vsnprintf", EOVERFLOW);
    Log(LOG_ERR, "%s:%d lost", 1);
  }
  Log(LOG_ERR, "%s:%d found", 2);
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message, "kelpwifiupdater:2 found");
}

TEST(LogFailures, LongerLineIsCutAt128KiBWhereThereIsNoMemory) {
  lab::PrivateRoot device;
  lab::InRoot inside(device);
  const std::string word(140'000, 'w');
  {
    const testing_support::FailingAllocation failing;
    Log(LOG_ERR, "%s:%d %s", 776, word.c_str());
    EXPECT_EQ(LogReport("%s:%d %s", 954, word.c_str()), LogResult::TooLong);
    EXPECT_EQ(testing_support::FailingAllocation::Failed(), 2);
  }
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message.size(), 131'072U);
  EXPECT_TRUE(("kelpwifiupdater:776 " + word).starts_with(lines[0].message));
}

TEST(LogFailures, SocketIsNotWaitedForWhereTheWaitCannotBeBounded) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  const testing_support::HangGuard guard("logging without a bound to the wait");
  testing_support::FailingCalls calls;
  calls.Fail("setsockopt", ENOPROTOOPT, 1, std::numeric_limits<int>::max());
  {
    const testing_support::LogDaemon daemon(SOCK_STREAM);
    const auto waiting = daemon.FillBacklog();
    EXPECT_EQ(LogReport("%s:%d lost", 1), LogResult::NoRoom);
  }
  const testing_support::LogDaemon daemon(SOCK_DGRAM);
  while (LogReport("%s:%d unread", 1) == LogResult::Taken) {
  }
}

TEST(LogFailures, ConnectionMadeWithoutTimeToWaitLetsALaterLineWait) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  const testing_support::HangGuard guard("logging to a daemon of streams");
  const testing_support::LogDaemon daemon(SOCK_STREAM);
  OutputWaitBudget none(std::chrono::seconds(0));
  OutputWait no_wait(none);
  ASSERT_EQ(SendToLog("one", 3, no_wait), LogResult::Taken);
  OutputWaitBudget budget(std::chrono::milliseconds(200));
  OutputWait wait(budget);
  const std::string line(1'000'000, 'l');
  const testing_support::FailingCalls calls;
  EXPECT_EQ(SendToLog(line.c_str(), line.size(), wait), LogResult::NoRoom);
  EXPECT_LT(calls.Made({"setsockopt"}).size(), 10U);  // it slept
}

/// The one datagram of a line "text" at the given moment of UTC.
std::string DatagramAt(std::optional<std::time_t> moment) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  const testing_support::LogDaemon daemon(SOCK_DGRAM);
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
  fixed_time = moment;
  has_local_time = moment.has_value();
  LogFormatted(LOG_ERR, "text");
  fixed_time.reset();
  has_local_time = true;
  const auto datagrams = daemon.Datagrams();
  return datagrams.size() == 1 ? datagrams[0] : "";
}

TEST(LogFailures, StampsAreThoseOfTheCLocale) {
  const std::string rest = " failure_tests: text";
  EXPECT_EQ(DatagramAt(0), "<11>Jan  1 00:00:00" + rest);
  EXPECT_EQ(DatagramAt(1'770'609'845), "<11>Feb  9 04:04:05" + rest);
  EXPECT_EQ(DatagramAt(1'772'323'199), "<11>Feb 28 23:59:59" + rest);
  EXPECT_EQ(DatagramAt(1'775'001'600), "<11>Apr  1 00:00:00" + rest);
  EXPECT_EQ(DatagramAt(1'798'761'599), "<11>Dec 31 23:59:59" + rest);
  const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (int month = 0; month < 12; ++month) {
    EXPECT_EQ(DatagramAt(1'767'225'600 + 86'400 * (15 + 30 * month)).substr(4, 3), months[month]);
  }
}

TEST(LogFailures, LineWithoutALocalTimeHasNoStamp) {
  EXPECT_EQ(DatagramAt(std::nullopt), "<11>: text");
}

}  // namespace
}  // namespace KELP::Wifi

// The linker puts these in the place of the C library's (--wrap).
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wreserved-identifier"
extern "C" {

std::time_t __real_time(std::time_t* place);
std::time_t __wrap_time(std::time_t* place) {
  return KELP::Wifi::fixed_time ? *KELP::Wifi::fixed_time : __real_time(place);
}

std::tm* __real_localtime_r(const std::time_t* time, std::tm* local);
std::tm* __wrap_localtime_r(const std::time_t* time, std::tm* local) {
  return KELP::Wifi::has_local_time ? __real_localtime_r(time, local) : nullptr;
}

}  // extern "C"
