#include "lab/sweeps/power_cut_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;
using ::testing::Optional;

const std::string kFolder = "/usr/kelp/etc/wifi/";
const Entry kDocument{Entry::Kind::File, 0600, "{}"};
const Entry kLegacy{Entry::Kind::File, 0644, "old"};

class PowerCutRulesTest : public ::testing::Test {
 protected:
  PowerCutRulesTest() {
    undisturbed_.status = 0;
    undisturbed_.files = {{kFolder + "global.json", kDocument},
                          {kFolder + "misc.json", kDocument},
                          {kFolder + "legacy", {Entry::Kind::Directory, 0755, ""}},
                          {kFolder + "legacy/wifi_wps", kLegacy}};
  }

  PowerCutRules Rules() const {
    return {device_, undisturbed_,
            ExtractFileOperations(
                Calls({"rename('" + kFolder + "global.json.new', '" + kFolder + "global.json') = 0",
                       "rename('" + kFolder + "misc.json.new', '" + kFolder + "misc.json') = 0"}))};
  }

  Device device_{{{kFolder + "wifi_wps", kLegacy}}, 8000};
  Outcome undisturbed_;
};

TEST_F(PowerCutRulesTest, AllowsTheBeginningTheEndAndWhatLiesBetween) {
  EXPECT_EQ(Rules().FindWrongState(device_.files), std::nullopt);
  EXPECT_EQ(Rules().FindWrongState(undisturbed_.files), std::nullopt);
  Tree state = device_.files;
  state[kFolder + "global.json"] = kDocument;
  state[kFolder + "misc.json.new"] = {Entry::Kind::File, 0600, ""};
  EXPECT_EQ(Rules().FindWrongState(state), std::nullopt);
}

TEST_F(PowerCutRulesTest, AllowsTheDocumentsToBecomeDurableInAnyOrder) {
  Tree state = device_.files;
  state[kFolder + "misc.json"] = kDocument;
  EXPECT_EQ(Rules().FindWrongState(state), std::nullopt);
  state[kFolder + "global.json.new"] = {Entry::Kind::File, 0600, ""};
  state[kFolder + "legacy"] = {Entry::Kind::Directory, 0755, ""};
  EXPECT_EQ(Rules().FindWrongState(state), std::nullopt);
}

TEST_F(PowerCutRulesTest, WantsEveryDocumentDurableBeforeAFileIsArchived) {
  for (const char* const document : {"global.json", "misc.json"}) {
    Tree state = undisturbed_.files;
    state.erase(kFolder + document);
    EXPECT_THAT(Rules().FindWrongState(state),
                Optional(kFolder + "wifi_wps was archived before " + kFolder + document + " was durable"));
    state[kFolder + document + ".new"] = kDocument;
    EXPECT_THAT(Rules().FindWrongState(state), Optional(HasSubstr("was archived before")));
  }
}

TEST_F(PowerCutRulesTest, WantsTheNewDocumentAndNotTheOldOneDurableBeforeAFileIsArchived) {
  device_.files[kFolder + "misc.json"] = {Entry::Kind::File, 0600, "{\"earlier\": true}"};
  EXPECT_EQ(Rules().FindWrongState(undisturbed_.files), std::nullopt);
  Tree state = undisturbed_.files;
  state[kFolder + "misc.json"] = device_.files.at(kFolder + "misc.json");
  EXPECT_THAT(Rules().FindWrongState(state), Optional(HasSubstr("was archived before")));
}

TEST_F(PowerCutRulesTest, SeesALostFile) {
  Tree state = undisturbed_.files;
  state.erase(kFolder + "legacy/wifi_wps");
  EXPECT_THAT(Rules().FindWrongState(state), Optional(HasSubstr("wifi_wps")));
}

TEST_F(PowerCutRulesTest, ARunThatFindsADocumentLeavesEverythingAlone) {
  Tree state = device_.files;
  state[kFolder + "global.json"] = kDocument;
  Outcome outcome;
  outcome.status = 0;
  outcome.files = state;
  outcome.log = {"3: kelpwifiupdater:225 New config is existed, so stop migrating."};
  EXPECT_EQ(Rules().FindWrongRun(state, outcome), std::nullopt);
  EXPECT_THAT(Rules().FindWrongRun(state, undisturbed_), Optional(HasSubstr("missing")));
  outcome.err = "stopped\n";
  EXPECT_THAT(Rules().FindWrongRun(state, outcome), Optional(HasSubstr("on standard error")));
  outcome.err = "";
  outcome.log.emplace_back("3: one line more");
  EXPECT_THAT(Rules().FindWrongRun(state, outcome), Optional(HasSubstr("not at the end of the log")));
}

TEST_F(PowerCutRulesTest, ARunThatFindsNoneMigratesEverything) {
  EXPECT_EQ(Rules().FindWrongRun(device_.files, undisturbed_), std::nullopt);
  Outcome outcome = undisturbed_;
  outcome.log.emplace_back("3: kelpwifiupdater:760 Invalid security mode: , select wpa2.");
  EXPECT_THAT(Rules().FindWrongRun(device_.files, outcome), Optional(HasSubstr("said something else")));
  outcome = undisturbed_;
  outcome.status = 1;
  EXPECT_THAT(Rules().FindWrongRun(device_.files, outcome), Optional(HasSubstr("status 1")));
}

TEST_F(PowerCutRulesTest, AHalfRemovedGeneration13IsReportedAndLeftAlone) {
  device_ = {{{kFolder + "backhaul.json", kLegacy}, {kFolder + "country.json", kLegacy}}, 9000};
  Outcome outcome;
  outcome.status = 1;
  outcome.files = device_.files;
  outcome.log = {
      "3: Failed to update config, error: some old config files are not existed., buildNumber: 9000"};
  EXPECT_THAT(Rules().FindWrongRun(device_.files, outcome), Optional(HasSubstr("on standard error")));
  outcome.err = "Failed to update config, error: some old config files are not existed.\n";
  EXPECT_EQ(Rules().FindWrongRun(device_.files, outcome), std::nullopt);
}

TEST_F(PowerCutRulesTest, SeesHangsAndSignals) {
  Outcome outcome = undisturbed_;
  outcome.signal = 6;
  EXPECT_THAT(Rules().FindWrongRun(device_.files, outcome), Optional(HasSubstr("signal 6")));
  outcome.signal = 0;
  outcome.timed_out = true;
  EXPECT_THAT(Rules().FindWrongRun(device_.files, outcome), Optional(HasSubstr("did not end")));
}

}  // namespace
}  // namespace lab::sweeps
