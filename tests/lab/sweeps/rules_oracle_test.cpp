#include "lab/sweeps/rules_oracle.h"

#include <gtest/gtest.h>

namespace lab::sweeps {
namespace {

Outcome Failed(const std::string& cause) {
  Outcome outcome;
  outcome.status = 1;
  outcome.err = "Failed to update config, error: " + cause + "\n";
  outcome.log = {"3: kelpwifiupdater:954 Failed to update config, error: " + cause + ", buildNumber: 8000"};
  return outcome;
}

TEST(RulesOracle, LeavesTheCauseOfAFailureOpen) {
  RulesOracle oracle;
  oracle.with_failed_service = {{{"/a"}, AsRulesSeeIt(Failed("cannot write /a: Input/output error"))}};
  EXPECT_TRUE(oracle.Allows(Failed("cannot flush /a: No space left on device"), "/a"));
}

TEST(RulesOracle, AllowsAnOutcomeOnlyWhereTheServicesAreAboutThatPlace) {
  RulesOracle oracle;
  Outcome without_usb = Failed("");
  without_usb.status = 0;
  oracle.with_failed_service = {{{"/a", "/c"}, AsRulesSeeIt(Failed("cannot write /a"))},
                                {{"/b"}, oracle.undisturbed},
                                {{""}, AsRulesSeeIt(without_usb)}};
  EXPECT_TRUE(oracle.Allows(Failed("cannot write /a"), "/a"));
  EXPECT_TRUE(oracle.Allows(Failed("cannot write /a"), "/c"));
  EXPECT_FALSE(oracle.Allows(Failed("cannot write /a"), "/b"));
  EXPECT_FALSE(oracle.Allows(without_usb, "/a"));
  EXPECT_FALSE(oracle.Allows(Failed("cannot write /a"), "/etc/fw_env.config"));
  EXPECT_TRUE(oracle.Allows(without_usb, "/etc/fw_env.config"));
}

TEST(RulesOracle, LeavesOpenWhetherAnEarlierRunsLeftoverIsGoneAlready) {
  RulesOracle oracle;
  oracle.with_failed_service = {{{"/a"}, AsRulesSeeIt(Failed("cannot write /a"))}};
  Outcome outcome = Failed("cannot write /a");
  outcome.files["/usr/kelp/etc/wifi/radio.json.new"] = {};
  EXPECT_TRUE(oracle.Allows(outcome, "/a"));
}

TEST(RulesOracle, LeavesNothingElseOpen) {
  RulesOracle oracle;
  oracle.with_failed_service = {{{"/a"}, AsRulesSeeIt(Failed("cannot write /a"))}};
  Outcome other = Failed("cannot write /a");
  other.log.push_back("3: kelpwifiupdater:896 Failed to call KELPUSBGetUSB3DisableUbootEnv");
  EXPECT_FALSE(oracle.Allows(other, "/a"));
  other = Failed("cannot write /a");
  other.files["/a"] = {};
  EXPECT_FALSE(oracle.Allows(other, "/a"));
  other = Failed("cannot write /a");
  other.status = 0;
  EXPECT_FALSE(oracle.Allows(other, "/a"));
}

TEST(RulesOracle, AllowsTheUndisturbedOutcome) {
  RulesOracle oracle;
  oracle.undisturbed.status = 0;
  oracle.undisturbed.files["/a"] = {};
  EXPECT_TRUE(oracle.Allows(oracle.undisturbed, "/a"));
  EXPECT_EQ(oracle.Trees().size(), 1U);
}

}  // namespace
}  // namespace lab::sweeps
