#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/unique_fd.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/log_daemon.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_calls.h"

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

TEST(LogFailures, DaemonThatTakesNoConnectionIsNotWaitedForWhereTheWaitCannotBeBounded) {
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  const testing_support::LogDaemon daemon(SOCK_STREAM);
  std::vector<UniqueFd> waiting;  // until there is no room for another
  const sockaddr address{AF_UNIX, "/dev/log"};
  do {
    waiting.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  } while (::connect(waiting.back().Get(), &address, sizeof address) == 0);
  ASSERT_EQ(errno, EAGAIN);

  testing_support::FailingCalls calls;
  calls.Fail("setsockopt", ENOPROTOOPT);
  ::alarm(30);  // it would wait for ever
  Log(LOG_ERR, "%s:%d lost", 1);
  ::alarm(0);
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
  const std::string rest = " base_failure_tests: text";
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
