#include "lab/sweeps/limit_trials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;

constexpr int kNotStarted = 124;
const std::string kGlobal = "/usr/kelp/etc/wifi/global.json";

class JudgeLimitedTest : public ::testing::Test {
 protected:
  JudgeLimitedTest() {
    measure_.device = {{{"/etc/a", {Entry::Kind::File, 0644, "a"}}}, 9000};
    measure_.steps = {{MigrationStep::Kind::Document, kGlobal}};
    Outcome& undisturbed = measure_.oracle.undisturbed;
    undisturbed.status = 0;
    undisturbed.files = measure_.device.files;
    undisturbed.files[kGlobal] = {Entry::Kind::File, 0600, "{}"};
    measure_.values.Add(undisturbed.files);
    failed_.status = 1;
    failed_.err = "Failed to update config, error: std::bad_alloc\n";
    failed_.log = {"3: Failed to update config, error: std::bad_alloc"};
    failed_.files = measure_.device.files;
    not_started_.status = kNotStarted;
    not_started_.err = "error while loading shared libraries";
    not_started_.files = measure_.device.files;
  }

  TrialResult Judge(const Outcome& outcome, const std::string& resource = "AS") const {
    return JudgeLimited(measure_, resource, 8192, false, outcome);
  }

  Measure measure_;
  Outcome failed_;
  Outcome not_started_;
};

TEST_F(JudgeLimitedTest, IsContentWithEitherStatusAndTellsWhich) {
  EXPECT_TRUE(Judge(failed_).is_well);
  EXPECT_EQ(Judge(failed_).text, "with status 1");
  EXPECT_TRUE(Judge(measure_.oracle.undisturbed).is_well);
  EXPECT_EQ(Judge(measure_.oracle.undisturbed).text, "with status 0");
}

TEST_F(JudgeLimitedTest, KnowsAProgramThatWasNotStarted) {
  EXPECT_TRUE(Judge(not_started_).is_well);
  EXPECT_EQ(Judge(not_started_).text, "before main");
  not_started_.files[kGlobal] = {Entry::Kind::File, 0600, "{}"};
  EXPECT_FALSE(Judge(not_started_).is_well);
  not_started_.files.erase(kGlobal);
  not_started_.log = {"4: Start"};
  EXPECT_FALSE(Judge(not_started_).is_well);
}

TEST_F(JudgeLimitedTest, SeesASignalASilentFailureAndATornDocument) {
  Outcome outcome = failed_;
  outcome.signal = 25;
  EXPECT_THAT(Judge(outcome).text, HasSubstr("signal 25"));
  outcome = failed_;
  outcome.err = "";
  EXPECT_FALSE(Judge(outcome).is_well);
  outcome = measure_.oracle.undisturbed;
  outcome.files[kGlobal].content = "{";
  EXPECT_FALSE(Judge(outcome).is_well);
  outcome = failed_;
  outcome.files[kGlobal + ".new"] = {Entry::Kind::File, 0600, "{"};
  EXPECT_FALSE(Judge(outcome).is_well);
}

TEST_F(JudgeLimitedTest, ExcusesTheLogOnlyWhereDescriptorsAreShort) {
  failed_.log.clear();
  EXPECT_FALSE(Judge(failed_, "AS").is_well);
  EXPECT_TRUE(Judge(failed_, "NOFILE").is_well);
}

TEST_F(JudgeLimitedTest, OnlyALackOfAnyStackMayEndARunBySignalAndWithoutHarm) {
  Outcome outcome = failed_;
  outcome.signal = 11;
  outcome.err.clear();
  outcome.log.clear();
  EXPECT_TRUE(Judge(outcome, "STACK").is_well);
  EXPECT_EQ(Judge(outcome, "STACK").text, "with no stack");
  EXPECT_FALSE(Judge(outcome, "DATA").is_well);
  EXPECT_FALSE(JudgeLimited(measure_, "STACK", 24576, false, outcome).is_well);
  outcome.files[kGlobal] = {Entry::Kind::File, 0600, "{"};
  EXPECT_FALSE(Judge(outcome, "STACK").is_well);
  outcome.files[kGlobal].content = "{}";
  EXPECT_TRUE(Judge(outcome, "STACK").is_well);
  outcome.signal = 6;
  EXPECT_FALSE(Judge(outcome, "STACK").is_well);
}

TEST_F(JudgeLimitedTest, PlentyIsEnough) {
  EXPECT_TRUE(JudgeLimited(measure_, "AS", 8192, true, measure_.oracle.undisturbed).is_well);
  EXPECT_FALSE(JudgeLimited(measure_, "AS", 8192, true, failed_).is_well);
  EXPECT_FALSE(JudgeLimited(measure_, "AS", 8192, true, not_started_).is_well);
}

TEST(LimitRanges, GoFromNothingToPlentyWithoutRepetition) {
  EXPECT_EQ(LimitRanges().size(), 5U);
  for (const LimitRange& range : LimitRanges()) {
    EXPECT_EQ(range.values.front(), 0U) << range.resource;
    const auto repeated =
        std::adjacent_find(range.values.begin(), range.values.end(), std::greater_equal<>());
    EXPECT_EQ(repeated, range.values.end()) << range.resource;
  }
}

}  // namespace
}  // namespace lab::sweeps
