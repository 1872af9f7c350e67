#include "lab/sweeps/trial.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;

Trial ThatGives(const std::string& name, const std::string& kind, const TrialResult& result) {
  return {name, kind, "", [result] { return result; }};
}

const std::vector<Trial> kTrials{ThatGives("read:1:EIO", "read EIO", Well()),
                                 ThatGives("limit:AS:0", "limit AS", {true, "before main"}),
                                 ThatGives("limit:AS:9", "limit AS", Wrong("ended by\nsignal 6"))};

TEST(Make, GivesTheResultsInOrder) {
  const std::vector<TrialResult> results = Make(kTrials, 2);
  ASSERT_EQ(results.size(), 3U);
  EXPECT_TRUE(results[0].is_well);
  EXPECT_EQ(results[0].text, "");
  EXPECT_TRUE(results[1].is_well);
  EXPECT_EQ(results[1].text, "before main");
  EXPECT_FALSE(results[2].is_well);
  EXPECT_EQ(results[2].text, "ended by\nsignal 6");
}

TEST(Sample, HoldsOneOfEveryKind) {
  const std::vector<Trial> sample = Sample(kTrials, 1, 3);
  ASSERT_EQ(sample.size(), 2U);
  EXPECT_EQ(sample[0].kind, "read EIO");
  EXPECT_EQ(sample[1].kind, "limit AS");
}

TEST(Named, GivesThoseAskedFor) {
  ASSERT_EQ(Named(kTrials, {"limit:AS:9"}).size(), 1U);
  EXPECT_EQ(Named(kTrials, {"limit:AS:9"}).front().name, "limit:AS:9");
  EXPECT_THROW(Named(kTrials, {"limit:AS:9", "limit:AS:8"}), std::runtime_error);
}

TEST(PrintCounts, CountsByKindAndTellsWhetherAllEndedWell) {
  ::testing::internal::CaptureStdout();
  EXPECT_FALSE(PrintCounts(kTrials, {Well(), {true, "before main"}, Wrong("no")}));
  const std::string text = ::testing::internal::GetCapturedStdout();
  EXPECT_THAT(text, HasSubstr("limit AS                         2 tried     1 ended well, 1 before main\n"));
  EXPECT_THAT(text, HasSubstr("3 tried, 2 ended well\n"));
  ::testing::internal::CaptureStdout();
  EXPECT_TRUE(PrintCounts({kTrials[0]}, {Well()}));
  ::testing::internal::GetCapturedStdout();
}

}  // namespace
}  // namespace lab::sweeps
