#include "lab/sweeps/verdict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;
using ::testing::Optional;

const std::string kReport = "Failed to update config, error: cannot write";
const std::string kMisc = "/usr/kelp/etc/wifi/misc.json";

class VerdictTest : public ::testing::Test {
 protected:
  VerdictTest() {
    oracle_.undisturbed.status = 0;
    oracle_.undisturbed.log = {"4: Start", "3: Invalid tx power"};
    oracle_.undisturbed.files[kMisc] = {Entry::Kind::File, 0600, "{}"};
    failed_.status = 1;
    failed_.err = kReport + "\n";
    failed_.log = {"4: Start", "3: " + kReport};
    oracle_.with_failed_service = {{{kMisc}, AsRulesSeeIt(failed_)}};
    fault_.place = kMisc;
  }

  std::optional<std::string> Wrong(const Outcome& outcome) const {
    return FindWrong({}, fault_, oracle_, outcome);
  }

  RulesOracle oracle_;
  Outcome failed_;
  Fault fault_;
};

TEST_F(VerdictTest, IsContentWithWhatTheRulesGive) {
  EXPECT_EQ(Wrong(oracle_.undisturbed), std::nullopt);
  EXPECT_EQ(Wrong(failed_), std::nullopt);
}

TEST_F(VerdictTest, SeesHangsSignalsAndOtherStatuses) {
  Outcome outcome = oracle_.undisturbed;
  outcome.timed_out = true;
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("did not end")));
  outcome = oracle_.undisturbed;
  outcome.signal = 11;
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("signal 11")));
  outcome = oracle_.undisturbed;
  outcome.status = 2;
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("status 2")));
}

TEST_F(VerdictTest, WantsExactlyOneFailureLineOnEachChannel) {
  Outcome outcome = failed_;
  outcome.err = "";
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("standard error")));
  outcome = failed_;
  outcome.err += outcome.err;
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("standard error")));
  outcome = failed_;
  outcome.log.pop_back();
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("0 failure lines in the log")));
}

TEST_F(VerdictTest, SeesSuccessWithoutAStep) {
  fault_.duty = Fault::Duty::Fail;
  EXPECT_THAT(Wrong(oracle_.undisturbed), Optional(HasSubstr("a step was not done")));
  EXPECT_EQ(Wrong(failed_), std::nullopt);
}

TEST_F(VerdictTest, WantsTheSameResultOfWhatCanBeRepeated) {
  fault_.duty = Fault::Duty::SameResult;
  EXPECT_EQ(Wrong(oracle_.undisturbed), std::nullopt);
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("the result has changed")));
}

TEST_F(VerdictTest, SeesAResultThatNoRuleGives) {
  Outcome outcome = oracle_.undisturbed;
  outcome.log.clear();
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("the rules give no such result")));
}

TEST_F(VerdictTest, SeesTheResultOfAnotherFault) {
  fault_.place = "/etc/fw_env.config";
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("the rules give no such result")));
}

TEST_F(VerdictTest, WithoutMemoryMoreThanOneServiceMayFailButNoStepMayBeLeftOut) {
  fault_.kind = Fault::Kind::NoMemory;
  Outcome outcome = oracle_.undisturbed;
  outcome.log.emplace_back("3: a fall-back");
  EXPECT_EQ(Wrong(outcome), std::nullopt);
  outcome.files.clear();
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("a step was not done")));
  outcome = failed_;
  outcome.files.clear();
  EXPECT_EQ(Wrong(outcome), std::nullopt);
}

TEST_F(VerdictTest, SeesABreach) {
  Outcome outcome = oracle_.undisturbed;
  outcome.files[kMisc].content = "{";
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("misc.json")));
}

TEST_F(VerdictTest, ExcusesOneLineOfTheLogThatAFaultFellOn) {
  fault_.channel = Fault::Channel::Log;
  Outcome outcome = oracle_.undisturbed;
  outcome.log.erase(outcome.log.begin());
  EXPECT_EQ(Wrong(outcome), std::nullopt);
  outcome.log.clear();
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("more was lost")));
}

TEST_F(VerdictTest, ExcusesStandardErrorOnlyWhereTheFaultFellOnIt) {
  oracle_.undisturbed = failed_;
  fault_.channel = Fault::Channel::StandardError;
  Outcome outcome = failed_;
  outcome.err = "";
  EXPECT_EQ(Wrong(outcome), std::nullopt);
  outcome.log.pop_back();
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("failure lines in the log")));
}

}  // namespace
}  // namespace lab::sweeps
