#include "lab/sweeps/obstruction_trials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;

const std::string kGlobal = "/usr/kelp/etc/wifi/global.json";

class JudgeObstructedTest : public ::testing::Test {
 protected:
  JudgeObstructedTest() {
    measure_.device = {{}, 8000};
    measure_.steps = {{MigrationStep::Kind::Document, kGlobal}};
    undisturbed_.status = 0;
    undisturbed_.log = {"4: Start"};
    undisturbed_.files[kGlobal] = {Entry::Kind::File, 0600, R"({"usb": 0})"};
    measure_.values.Add(undisturbed_.files);
    locked_ = undisturbed_;
    locked_.log.emplace_back("3: kelpwifiupdater:896 Failed to call KELPUSBGetUSB3DisableUbootEnv");
    locked_.files[kGlobal].content = R"({"usb": 1})";
    measure_.values.Add(locked_.files);
  }

  TrialResult Judge(const Obstruction& obstruction, const Outcome& outcome) const {
    return JudgeObstructed(measure_, obstruction, outcome);
  }

  Measure measure_;
  Outcome& undisturbed_ = measure_.oracle.undisturbed;
  Outcome locked_;
};

TEST_F(JudgeObstructedTest, ALogThatNobodyReadsCostsItsLinesOnly) {
  Outcome outcome = undisturbed_;
  EXPECT_FALSE(Judge({.stuck_log = true}, outcome).is_well);
  outcome.log.clear();
  EXPECT_TRUE(Judge({.stuck_log = true}, outcome).is_well);
  EXPECT_FALSE(Judge({.full_console = true}, outcome).is_well);
  outcome.files[kGlobal].content = R"({"usb": 1})";
  EXPECT_FALSE(Judge({.stuck_log = true}, outcome).is_well);
}

TEST_F(JudgeObstructedTest, AConsoleThatNobodyReadsCostsItsLinesOnly) {
  undisturbed_ = {};
  undisturbed_.status = 1;
  undisturbed_.err = "Failed to update config, error: no\n";
  undisturbed_.log = {"3: Failed to update config, error: no"};
  Outcome outcome = undisturbed_;
  outcome.err.clear();
  EXPECT_TRUE(Judge({.full_console = true}, outcome).is_well);
  outcome.log.clear();
  EXPECT_FALSE(Judge({.full_console = true}, outcome).is_well);
}

TEST_F(JudgeObstructedTest, SeesARunThatDoesNotEnd) {
  Outcome outcome = undisturbed_;
  outcome.timed_out = true;
  for (const Obstruction& obstruction :
       {Obstruction{.stuck_log = true}, Obstruction{.full_console = true}, Obstruction{.held_lock = true}}) {
    EXPECT_THAT(Judge(obstruction, outcome).text, HasSubstr("did not end"));
  }
}

TEST_F(JudgeObstructedTest, ALockThatIsKeptCostsTheFallbackAndIsTold) {
  EXPECT_TRUE(Judge({.held_lock = true}, locked_).is_well);
  EXPECT_THAT(Judge({.held_lock = true}, undisturbed_).text, HasSubstr("nothing tells"));
  measure_.device.build_number = 9000;  // asks nobody for the boot environment
  EXPECT_TRUE(Judge({.held_lock = true}, undisturbed_).is_well);
}

TEST_F(JudgeObstructedTest, ALockThatIsKeptEndsNoRun) {
  Outcome outcome = locked_;
  outcome.status = 1;
  outcome.files.clear();
  outcome.err = "Failed to update config, error: no\n";
  outcome.log.emplace_back("3: Failed to update config, error: no");
  EXPECT_THAT(Judge({.held_lock = true}, outcome).text, HasSubstr("the lock has changed the status"));
}

}  // namespace
}  // namespace lab::sweeps
