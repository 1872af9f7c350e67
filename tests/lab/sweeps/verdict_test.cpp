#include "lab/sweeps/verdict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;
using ::testing::Optional;

const std::string kReport = "Failed to update config, error: cannot write";
const std::string kMisc = "/usr/kelp/etc/wifi/misc.json";

class VerdictTest : public ::testing::Test {
 protected:
  VerdictTest() {
    measure_.steps = {{MigrationStep::Kind::Document, kMisc}};
    oracle_.undisturbed.status = 0;
    oracle_.undisturbed.log = {"4: Start", "3: Invalid tx power"};
    oracle_.undisturbed.files[kMisc] = {Entry::Kind::File, 0600, "{}"};
    failed_.status = 1;
    failed_.err = kReport + "\n";
    failed_.log = {"4: Start", "3: " + kReport};
    oracle_.with_failed_service = {{{kMisc}, AsRulesSeeIt(failed_)}};
    fault_.place = kMisc;
    measure_.values.Add(oracle_.undisturbed.files);
  }

  std::optional<std::string> Wrong(const Outcome& outcome) const {
    return FindWrong(measure_, fault_, outcome);
  }

  Measure measure_;
  RulesOracle& oracle_ = measure_.oracle;
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

TEST_F(VerdictTest, AFileThatIsNotThereIsMissedByMoreThanOneService) {
  Outcome outcome = oracle_.undisturbed;
  outcome.log = {"4: Start", "3: a fall-back", "3: another"};
  fault_.error = "EIO";
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("the rules give no such result")));
  fault_.error = "ENOENT";
  EXPECT_EQ(Wrong(outcome), std::nullopt);
  outcome.files.clear();
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("a step was not done")));
}

TEST_F(VerdictTest, SeesTheResultOfAnotherFault) {
  fault_.place = "/etc/fw_env.config";
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("the rules give no such result")));
}

TEST_F(VerdictTest, AFailedStepEndsTheRunWhereItWas) {
  fault_.duty = Fault::Duty::Fail;
  fault_.reason = {"cannot ", "misc.json", "Input/output error"};
  failed_.log.back() += " /misc.json: Input/output error";
  EXPECT_EQ(Wrong(failed_), std::nullopt);
  fault_.steps_before = 1;
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("the steps before the failed one are 1, those made 0")));
}

TEST_F(VerdictTest, AFailedStepIsNamedWithItsCause) {
  fault_.duty = Fault::Duty::Fail;
  fault_.reason = {"cannot ", "misc.json"};
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("the reason")));
  failed_.log.back() = "3: Failed to update config, error: it cannot write misc.json";
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("the reason")));
}

TEST_F(VerdictTest, WhatIsForgivenMayNotEndTheRun) {
  fault_.duty = Fault::Duty::Forgive;
  EXPECT_EQ(Wrong(oracle_.undisturbed), std::nullopt);
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("not forgiven")));
}

TEST_F(VerdictTest, AnUnreadableInformationStoreIsTold) {
  fault_.duty = Fault::Duty::Tell;
  EXPECT_THAT(Wrong(oracle_.undisturbed), Optional(HasSubstr("nothing tells")));
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("nothing tells")));
  failed_.log.back() =
      "3: Failed to update config, error: cannot read /usr/kelp/etc/info.conf: Input/output error";
  EXPECT_EQ(Wrong(failed_), std::nullopt);
  Outcome fallen_back = oracle_.undisturbed;
  fallen_back.log.emplace_back("3: kelpwifiupdater:300 Failed to get backhaul swap, default false: ");
  oracle_.with_failed_service.push_back({{kMisc}, fallen_back});
  EXPECT_EQ(Wrong(fallen_back), std::nullopt);
}

TEST_F(VerdictTest, AnInformationStoreThatIsGoneForGoodEndsTheRun) {
  fault_.duty = Fault::Duty::Tell;
  fault_.lasting = true;
  Outcome outcome = oracle_.undisturbed;
  outcome.log.emplace_back("3: kelpwifiupdater:300 Failed to get backhaul swap, default false: ");
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("did not end for it")));
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("did not end for it")));
  failed_.log.back() =
      "3: Failed to update config, error: cannot read /usr/kelp/etc/info.conf: Input/output error";
  EXPECT_EQ(Wrong(failed_), std::nullopt);
}

TEST_F(VerdictTest, SeesAStepBehindOneThatWasNotMade) {
  measure_.steps.insert(measure_.steps.begin(),
                        {MigrationStep::Kind::Document, "/usr/kelp/etc/wifi/global.json"});
  EXPECT_THAT(Wrong(oracle_.undisturbed), Optional(HasSubstr("a step was made behind one that was not")));
}

TEST_F(VerdictTest, AFailureBehindTheLastStepIsNone) {
  failed_.files = oracle_.undisturbed.files;
  EXPECT_THAT(Wrong(failed_), Optional(HasSubstr("all steps were made")));
}

TEST_F(VerdictTest, WhereMoreThanOneServiceFailsTheValuesMayBeAnyOfThoseKnown) {
  Outcome other = oracle_.undisturbed;
  other.files[kMisc].content = R"({"a": 2, "b": 2})";
  measure_.values.Add({{kMisc, {Entry::Kind::File, 0600, R"({"a": 1, "b": 1})"}}});
  measure_.values.Add(other.files);
  other.files[kMisc].content = R"({"a": 1, "b": 2})";
  EXPECT_THAT(Wrong(other), Optional(HasSubstr("misc.json")));
  fault_.kind = Fault::Kind::NoMemory;
  EXPECT_EQ(Wrong(other), std::nullopt);
  fault_.kind = Fault::Kind::Error;
  fault_.lasting = true;
  EXPECT_EQ(Wrong(other), std::nullopt);
  other.files[kMisc].content = R"({"a": 1, "b": 3})";
  EXPECT_THAT(Wrong(other), Optional(HasSubstr("misc.json")));
}

TEST_F(VerdictTest, WithoutMemoryNoStepMayBeLeftOut) {
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

TEST_F(VerdictTest, ALastingFaultOfAStepEndsTheRunThere) {
  fault_.duty = Fault::Duty::Fail;
  fault_.lasting = true;
  fault_.reason = {"cannot write"};
  EXPECT_EQ(Wrong(failed_), std::nullopt);
  EXPECT_THAT(Wrong(oracle_.undisturbed), Optional(HasSubstr("a step was not done")));
}

TEST_F(VerdictTest, ALogThatIsGoneForGoodMayLoseAllThatComes) {
  fault_.channel = Fault::Channel::Log;
  fault_.lasting = true;
  Outcome outcome = oracle_.undisturbed;
  outcome.log.clear();
  EXPECT_EQ(Wrong(outcome), std::nullopt);
  outcome.log = {"4: another line"};
  EXPECT_THAT(Wrong(outcome), Optional(HasSubstr("more was lost than lines")));
}

TEST(TakeMeasure, RefusesARunThatDoesNotMakeItsSteps) {
  RulesOracle oracle;
  oracle.undisturbed.status = 0;
  EXPECT_THROW(TakeMeasure({{}, 9000}, oracle, {}), std::runtime_error);
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
