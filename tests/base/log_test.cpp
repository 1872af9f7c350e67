#include "base/log.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/base/log_daemon.h"
#include "tests/support/child_process.h"

namespace KELP::Wifi {
namespace {

using namespace std::chrono_literals;

class LogTest : public ::testing::Test {
 protected:
  lab::PrivateRoot device_;
};

TEST_F(LogTest, LineCarriesSourceNameNumberAndText) {
  lab::InRoot inside(device_);
  Log(LOG_ERR, "%s:%d Invalid security mode: %s, select wpa2.", 760, "wpa2");
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message, "kelpwifiupdater:760 Invalid security mode: wpa2, select wpa2.");
  EXPECT_EQ(lines[0].severity, LOG_ERR);
}

TEST_F(LogTest, PriorityIsTheCallersAndTheFacilityIsTheDefault) {
  lab::InRoot inside(device_);
  Log(LOG_ERR, "%s:%d error", 1);
  Log(LOG_WARNING, "%s:%d update nothing from %d.", 120, 9225);
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].severity, 3);
  EXPECT_EQ(lines[1].severity, 4);
  EXPECT_EQ(lines[0].facility, LOG_USER);
  EXPECT_EQ(lines[1].facility, LOG_USER);
  EXPECT_EQ(lines[1].message, "kelpwifiupdater:120 update nothing from 9225.");
}

TEST_F(LogTest, ArgumentsAreNeverFormats) {
  lab::InRoot inside(device_);
  Log(LOG_ERR, "%s:%d Failed to get network context: %s", 168, "unsupported net_topology: %s%n%d%");
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message,
            "kelpwifiupdater:168 Failed to get network context: unsupported net_topology: %s%n%d%");
}

TEST_F(LogTest, EmptyArgumentLeavesItsPlaceEmpty) {
  lab::InRoot inside(device_);
  Log(LOG_ERR, "%s:%d Invalid pmf mode: %s, select disabled.", 776, "");
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message, "kelpwifiupdater:776 Invalid pmf mode: , select disabled.");
}

TEST_F(LogTest, BytesAbove0x7FArriveAsTheyAre) {
  lab::InRoot inside(device_);
  Log(LOG_ERR, "%s:%d <%s>", 1, "caf\xE9\xFF");
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message, "kelpwifiupdater:1 <caf\xE9\xFF>");
}

TEST_F(LogTest, LinesOfEveryUsualLengthArriveWhole) {
  lab::InRoot inside(device_);
  const std::string start = "kelpwifiupdater:1 ";
  for (const std::size_t length : {1000U, 1022U, 1023U, 1024U, 1025U, 2048U, 65'536U, 131'071U, 131'072U,
                                   131'073U, 140'000U, 200'000U}) {
    const std::string word(length - start.size(), 'w');
    Log(LOG_ERR, "%s:%d %s", 1, word.c_str());
    const auto lines = inside.Log();
    ASSERT_EQ(lines.size(), 1U) << length;
    EXPECT_TRUE(lines[0].message == start + word) << length << " arrived as " << lines[0].message.size();
  }
}

TEST_F(LogTest, LineThatTheSocketDoesNotTakeIsCutAt128KiB) {
  lab::InRoot inside(device_);
  const std::string word(5'000'000, 'w');
  Log(LOG_ERR, "%s:%d Invalid security mode: %s, select wpa2.", 760, word.c_str());
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  const std::string whole = "kelpwifiupdater:760 Invalid security mode: " + word + ", select wpa2.";
  EXPECT_EQ(lines[0].message.size(), 131'072U);
  EXPECT_TRUE(whole.starts_with(lines[0].message));
  EXPECT_EQ(lines[0].severity, LOG_ERR);
}

TEST_F(LogTest, ManyLinesArriveInOrder) {
  lab::InRoot inside(device_);
  for (int i = 0; i < 100; ++i) Log(LOG_ERR, "%s:%d line", i);
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 100U);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(lines[static_cast<std::size_t>(i)].message, "kelpwifiupdater:" + std::to_string(i) + " line");
  }
}

TEST_F(LogTest, WithoutADaemonTheLineIsLostAndNothingElseHappens) {
  lab::InRoot inside(device_);
  // What stands at the socket's place is no daemon's socket.
  std::rename("/dev/log", "/dev/away");
  Log(LOG_ERR, "%s:%d lost", 1);
  std::rename("/dev/away", "/dev/log");
  Log(LOG_ERR, "%s:%d found", 2);
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].message, "kelpwifiupdater:2 found");
}

/// What is left for all lines and for the report once somebody else has filled the socket, nobody reads it
/// and `log` has logged.
template <typename LogSomething>
void ExpectLeft(OutputWait::Time least, OutputWait::Time most, OutputWaitBudget& budget,
                OutputWaitBudget& other, LogSomething log) {
  testing_support::ExpectInChild([&] {
    lab::PrivateRoot device;
    const lab::InRoot inside(device);
    const testing_support::LogDaemon daemon(SOCK_DGRAM);
    daemon.Fill();
    const auto left_of_other = other.Remaining();
    log(daemon);
    EXPECT_GE(budget.Remaining(), least);
    EXPECT_LE(budget.Remaining(), most);
    EXPECT_EQ(other.Remaining(), left_of_other);
  });
}

TEST(LogWaits, LineThatWaitsInVainIsTheLastThatWaits) {
  ExpectLeft(0s, 0s, LogWaitBudget(), ReportWaitBudget(), [](auto& daemon) {
    Log(LOG_ERR, "%s:%d lost", 1);
    daemon.Datagrams();
    Log(LOG_ERR, "%s:%d found", 2);
    const auto got = daemon.Datagrams();
    ASSERT_EQ(got.size(), 1U);
    EXPECT_TRUE(got[0].ends_with("kelpwifiupdater:2 found"));
  });
}

TEST(LogWaits, LineThatFindsRoomLeavesTheOthersTheirTime) {
  ExpectLeft(1us, 10s - 100ms, LogWaitBudget(), ReportWaitBudget(), [](auto& daemon) {
    std::vector<std::string> got;
    std::thread reader([&] {
      std::this_thread::sleep_for(100ms);
      got = daemon.Datagrams();  // perhaps with the line that it makes room for
    });
    Log(LOG_ERR, "%s:%d late", 1);
    reader.join();
    for (std::string& line : daemon.Datagrams()) got.push_back(std::move(line));
    EXPECT_TRUE(got.back().ends_with("kelpwifiupdater:1 late")) << got.back();
  });
}

TEST(LogWaits, ReportWaitsForHalfOfItsOwnTimeAndThenForTheRest) {
  ExpectLeft(1us, 2500ms, ReportWaitBudget(), LogWaitBudget(),
             [](auto&) { EXPECT_EQ(LogReport("%s:%d lost", 1), LogResult::NoRoom); });
  ExpectLeft(0s, 0s, ReportWaitBudget(), LogWaitBudget(), [](auto&) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(LogReport("%s:%d lost", 1), LogResult::NoRoom);
  });
}

TEST_F(LogTest, ReportThatTheSocketDoesNotTakeIsNotCut) {
  lab::InRoot inside(device_);
  EXPECT_EQ(LogReport("%s:%d %s", 954, std::string(5'000'000, 'w').c_str()), LogResult::TooLong);
  EXPECT_EQ(inside.Log().size(), 0U);
  const std::string word(140'000, 'w');
  EXPECT_EQ(LogReport("%s:%d %s", 954, word.c_str()), LogResult::Taken);
  const auto lines = inside.Log();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].message == "kelpwifiupdater:954 " + word);
  EXPECT_EQ(lines[0].severity, LOG_ERR);
}

}  // namespace
}  // namespace KELP::Wifi
