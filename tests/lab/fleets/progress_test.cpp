#include "lab/fleets/progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace lab::fleets {
namespace {

using std::chrono::milliseconds;

TEST(ProgressTexts, TellHowFarItIs) {
  EXPECT_EQ(ProgressText({0, 0, 10, 0, milliseconds(0)}), "0 of 10 devices, 0 failures");
  EXPECT_EQ(ProgressText({200, 100, 1000, 1, milliseconds(2000)}),
            "300 of 1000 devices, 100 a second, 7 s left, 1 failure");
  EXPECT_EQ(ProgressText({1, 0, std::nullopt, 0, milliseconds(1000)}), "1 device, 1 a second, 0 failures");
  EXPECT_EQ(ProgressText({100, 0, 100'100, 2, milliseconds(1000)}),
            "100 of 100100 devices, 100 a second, 16 min left, 2 failures");
  EXPECT_EQ(ProgressText({100, 0, 1'000'100, 2, milliseconds(1000)}),
            "100 of 1000100 devices, 100 a second, 2 h left, 2 failures");
}

TEST(ProgressBars, ShowIt) {
  EXPECT_EQ(ProgressBar({5, 0, 10, 0, milliseconds(0)}, 10), "[#####.....] 5 of 10 devices, 0 failures");
  EXPECT_EQ(ProgressBar({5, 5, 10, 0, milliseconds(0)}, 4), "[####] 10 of 10 devices, 0 failures");
  EXPECT_EQ(ProgressBar({12, 0, 10, 0, milliseconds(0)}, 4).substr(0, 6), "[####]");
  EXPECT_EQ(ProgressBar({5, 0, std::nullopt, 0, milliseconds(0)}, 4), "5 devices, 0 failures");
}

TEST(Progresses, AreALineEveryTenSecondsInALog) {
  std::ostringstream out;
  Progress progress(out, false);
  for (const int seconds : {1, 9, 10, 11, 19, 21}) {
    progress.Show({static_cast<std::size_t>(seconds), 0, 100, 0, milliseconds(1000 * seconds)});
  }
  progress.End();
  EXPECT_EQ(out.str(),
            "10 of 100 devices, 1 a second, 90 s left, 0 failures\n"
            "21 of 100 devices, 1 a second, 79 s left, 0 failures\n");
}

TEST(Progresses, AreOneLineOnATerminal) {
  std::ostringstream out;
  Progress progress(out, true);
  progress.Show({1, 0, 4, 0, milliseconds(250)});
  progress.Show({1, 0, 4, 0, milliseconds(260)});
  progress.Show({4, 0, 4, 0, milliseconds(500)});
  progress.End();
  EXPECT_EQ(out.str(),
            "\r\x1b[K[#####...............] 1 of 4 devices, 4 a second, 1 s left, 0 failures"
            "\r\x1b[K[####################] 4 of 4 devices, 8 a second, 0 failures\r\x1b[K");
}

}  // namespace
}  // namespace lab::fleets
