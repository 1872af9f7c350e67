// Runs that nobody listens to, or only slowly: a log or a console that is not read, or is gone, costs its
// lines and nothing else; one that is read slowly gets them all.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "lab/images/descriptor.h"
#include "lab/runs/log_collector.h"
#include "tests/base/log_daemon.h"
#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

using namespace std::chrono_literals;
using testing_support::LogLines;
using testing_support::PrintLog;

/// A household about whose words there is more to say than the socket of a log usually holds.
class TalkativeDevice {
 public:
  TalkativeDevice() {
    for (const auto& [path, entry] : device_.Snapshot()) {
      if (path.starts_with(kWifi + "wifi_ap_")) device_.Write(path, "");
    }
  }
  lab::RunResult Update(const lab::RunOptions& options) { return UpdateFrom(device_, "8227", options); }
  /// As Update; the archive fails in the end.
  lab::RunResult Fail(const lab::RunOptions& options) {
    device_.Remove(kWifi + "lbd.guest.conf");
    lab::RunResult run = Update(options);
    EXPECT_FALSE(run.timed_out);
    EXPECT_EQ(run.status, 1);
    return run;
  }
  lab::PrivateRoot& Root() { return device_; }

 private:
  lab::PrivateRoot device_{Image("tri-band-mesh-router")};
};

TEST(Unheard, StuckLogCostsItsLinesOnly) {
  const lab::RunResult heard = TalkativeDevice().Update({});
  ASSERT_GE(heard.log.size(), 20U);
  ExpectSuccess(heard);

  const lab::RunResult run = TalkativeDevice().Update({.stuck_log = true});

  ExpectSuccess(run);
  EXPECT_EQ(run.after, heard.after);
}

TEST(Unheard, StuckLogIsNoReasonToKeepAFailureFromTheConsole) {
  lab::PrivateRoot device(Image("failing-archive"));
  const lab::RunResult run = UpdateFrom(device, "8000", {.stuck_log = true});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(run.err.starts_with("Failed to update config, error: filesystem error: cannot rename"));
  EXPECT_TRUE(run.err.ends_with("\n"));
}

/// A log daemon of the device, of datagrams or of streams, that reads nothing at first and then a line, or
/// about as many bytes, after each pause.
class SlowDaemon {
 public:
  SlowDaemon(lab::PrivateRoot& device, int type, std::chrono::milliseconds asleep,
             std::chrono::milliseconds pause)
      : folder_(device.Open("/dev", O_PATH | O_DIRECTORY)),
        daemon_(type, "/proc/self/fd/" + std::to_string(folder_.Get()) + "/log"),
        reader_([=, this](const std::stop_token& stop) {
          for (auto wait = asleep + pause; !stop.stop_requested(); wait = pause) {
            std::this_thread::sleep_for(wait);
            got_ += Read(type);
          }
          for (std::string last; !(last = Read(type)).empty();) got_ += last;
        }) {
    device.MarkProvided("/dev/log");
  }

  /// What it got, once the run is over.
  LogLines Lines() {
    reader_.request_stop();
    reader_.join();
    std::vector<lab::LogLine> lines;
    for (std::string_view rest = got_; !rest.empty();) {
      const std::size_t end = std::min(rest.find('\0'), rest.size() - 1);
      lines.push_back(lab::ParseLogLine(rest.substr(0, end)));
      rest.remove_prefix(end + 1);
    }
    return PrintLog(lines);
  }

 private:
  std::string Read(int type) {
    constexpr std::size_t kUsualLine = 120;
    if (type == SOCK_STREAM) return daemon_.ReadOne(connection_, kUsualLine);
    const std::string line = daemon_.ReadOne(connection_);
    return line.empty() ? line : line + '\0';
  }

  lab::Descriptor folder_;
  testing_support::LogDaemon daemon_;
  lab::Descriptor connection_;
  std::string got_;
  std::jthread reader_;
};

class SlowLog : public ::testing::TestWithParam<int> {};

TEST_P(SlowLog, GetsEveryLineOfAFailureThatHasMuchToSay) {
  const lab::RunResult heard = TalkativeDevice().Fail({});
  ASSERT_GE(heard.log.size(), 29U);
  TalkativeDevice device;
  SlowDaemon daemon(device.Root(), GetParam(), 0ms, 150ms);
  const lab::RunResult run = device.Fail({.collect_log = false});
  EXPECT_EQ(run.err, heard.err);
  EXPECT_EQ(daemon.Lines(), PrintLog(heard.log));
}

TEST_P(SlowLog, GetsTheFailureAlsoWhereItBeginsToReadAfterFourSeconds) {
  const lab::RunResult heard = TalkativeDevice().Fail({});
  TalkativeDevice device;
  SlowDaemon daemon(device.Root(), GetParam(), 4s, 1ms);
  const lab::RunResult run = device.Fail({.collect_log = false});
  EXPECT_EQ(run.err, heard.err);
  const LogLines lines = daemon.Lines();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), PrintLog(heard.log).back());
}

INSTANTIATE_TEST_SUITE_P(Kinds, SlowLog, ::testing::Values(SOCK_DGRAM, SOCK_STREAM),
                         [](const auto& type) { return type.param == SOCK_DGRAM ? "Datagrams" : "Streams"; });

class UnheardConsole : public ::testing::TestWithParam<lab::Console> {};

TEST_P(UnheardConsole, CostsTheTextOfAFailureOnly) {
  lab::PrivateRoot device(Image("failing-archive"));

  const lab::RunResult run = UpdateFrom(device, "8000", {.console = GetParam()});

  EXPECT_EQ(run.signal, 0);
  EXPECT_EQ(run.status, 1);
  const ExpectedRun expected("failing-archive");
  EXPECT_EQ(PrintLog(run.log), expected.Log());
  expected.ExpectDocuments(run.after);
  expected.ExpectPaths(run);
}

TEST_P(UnheardConsole, CostsTheTextOfAUsageErrorOnly) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"--help"}, {std::string(100'000, 'x')}, {"--update-config"}}) {
    lab::PrivateRoot device(Image("failing-archive"));
    const lab::RunResult run = RunUpdater(device, arguments, {.console = GetParam()});
    EXPECT_EQ(run.signal, 0);
    EXPECT_EQ(run.status, 1);
    ExpectUntouched(run);
  }
}

TEST_P(UnheardConsole, TogetherWithAStuckLogStillEnds) {
  lab::PrivateRoot device(Image("failing-archive"));
  const lab::RunResult run = UpdateFrom(device, "8000", {.console = GetParam(), .stuck_log = true});
  EXPECT_EQ(run.signal, 0);
  EXPECT_EQ(run.status, 1);
  ExpectedRun("failing-archive").ExpectDocuments(run.after);
}

INSTANTIATE_TEST_SUITE_P(All, UnheardConsole,
                         ::testing::Values(lab::Console::Closed, lab::Console::Broken, lab::Console::Full),
                         [](const auto& console) {
                           switch (console.param) {
                             case lab::Console::Closed:
                               return "Closed";
                             case lab::Console::Broken:
                               return "Broken";
                             default:
                               return "Full";
                           }
                         });

}  // namespace
}  // namespace end_to_end
