#include "cli/failure_report.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/captured_streams.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

constexpr std::size_t kMaxLine = 128UL * 1024;
constexpr std::size_t kNoSocketTakes = 5'000'000;

class FailureReport : public ::testing::Test {
 protected:
  /// The one log line of the report; its standard error has to hold the whole reason.
  std::string LineOf(const std::string& reason, const std::string& build_number) {
    device_.Run([&] {
      const auto console = testing_support::RunOnConsole([&] {
        ReportFailure(reason.c_str(), build_number.c_str());
        return 0;
      });
      EXPECT_EQ(console.out, "");
      EXPECT_TRUE(console.err == "Failed to update config, error: " + reason + "\n");
      return 0;
    });
    return device_.Log().size() == 1 ? device_.Log()[0] : "no line, or several";
  }
  static std::string Line(const std::string& reason, const std::string& build_number) {
    return "err kelpwifiupdater:954 Failed to update config, error: " + reason +
           ", buildNumber: " + build_number;
  }

  testing_support::TestDevice device_;
  const std::size_t room_ = kMaxLine - (Line("", "").size() - std::string("err ").size());
};

TEST_F(FailureReport, IsALogLineWithTheBuildNumberAndALineOnStandardError) {
  EXPECT_EQ(LineOf("the reason", " 08300 abc"), Line("the reason", " 08300 abc"));
  EXPECT_EQ(LineOf("", ""), Line("", ""));
  EXPECT_EQ(LineOf("%s\xff\n%n", "%d%s"), Line("%s\xff\n%n", "%d%s"));
}

TEST_F(FailureReport, ReasonThatTheSocketTakesIsNotCut) {
  for (const std::size_t length : {room_ - 4, room_ - 3, room_, 140'000UL, 200'000UL}) {
    const std::string reason(length, 'r');
    EXPECT_TRUE(LineOf(reason, "8000") == Line(reason, "8000")) << length;
  }
}

TEST_F(FailureReport, OverLongReasonIsCutAndTheBuildNumberStays) {
  const std::string reason(kNoSocketTakes, 'r');
  EXPECT_TRUE(LineOf(reason, "8000") == Line(std::string(room_ - 4, 'r'), "8000"));
}

TEST_F(FailureReport, OverLongBuildNumberIsCutAndTheFrameStays) {
  const std::string number(kNoSocketTakes, '9');
  EXPECT_TRUE(LineOf("stoi", number) == Line("stoi", std::string(room_ - 4, '9')));
  EXPECT_TRUE(LineOf("", number) == Line("", std::string(room_, '9')));
}

TEST_F(FailureReport, OfTwoOverLongTextsEachHasItsHalf) {
  const std::string half(room_ / 2, 'r');
  const std::string other_half(room_ - half.size(), 'r');
  const std::string number(room_ / 2, '9');
  EXPECT_TRUE(LineOf(std::string(kNoSocketTakes, 'r'), std::string(kNoSocketTakes, '9')) ==
              Line(other_half, number));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
