// Runs that nobody listens to: a log or a console that is not read, or is gone, costs its lines and nothing
// else.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/end_to_end/expected_run.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

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
