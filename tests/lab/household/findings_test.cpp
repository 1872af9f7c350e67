#include "lab/household/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/lab/household/household.h"

// What is found on a device has its cases in tests/cases/findings. Here are the runs that no program makes
// there.
namespace lab_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string kWifi = "/usr/kelp/etc/wifi/";

std::vector<std::string> Found(const lab::RunResult& run, const std::string& build = "8000") {
  std::vector<std::string> found;
  for (const lab::Finding& finding : lab::DetectFindings(run, build)) {
    found.push_back(std::string(finding.kind->id) + ": " + finding.detail);
  }
  return found;
}

TEST(DetectFindings, TellsARunThatTellsNothing) {
  Household household;
  lab::RunResult run = household.Update();
  run.after = run.before;
  run.log.resize(1);
  run.status = -1;
  run.signal = 11;
  EXPECT_THAT(Found(run), ElementsAre("migration-stopped: killed by signal 11"));
  run.timed_out = true;
  EXPECT_THAT(Found(run), ElementsAre("migration-stopped: did not end in time"));
}

TEST(DetectFindings, TellsARunThatWasKilledAfterItsDocuments) {
  Household household;
  lab::RunResult run = household.Update();
  run.status = -1;
  run.signal = 9;
  EXPECT_THAT(Found(run), ElementsAre("archive-stopped: killed by signal 9"));
}

TEST(DetectFindings, TellsDocumentsThatAreNotWritten) {
  for (const char* name : {"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"}) {
    Household household;
    lab::RunResult run = household.Update();
    run.after.erase(kWifi + name);
    const std::string told = std::string(name).substr(0, std::string(name).find(".json") + 5);
    EXPECT_THAT(Found(run), Contains("documents-not-written: missing: " + told));
    run.before[kWifi + "misc.json"] = lab::Entry{};
    EXPECT_THAT(Found(run), Not(Contains("documents-not-written: missing: " + told)));
  }
}

TEST(DetectFindings, TellsDocumentsThatAreNotJson) {
  for (const char* name : {"global.json", "misc.json", "radio.json", "wps.json", "network.json.default"}) {
    Household household;
    lab::RunResult run = household.Update();
    run.after[kWifi + name].content = "{";
    EXPECT_THAT(Found(run), Contains(std::string("document-unreadable: ") + name + " is not JSON"));
    EXPECT_THAT(Found(run), Not(Contains(::testing::StartsWith("documents-not-written"))));
    // One that was there before is not this run's.
    run.before[kWifi + name] = run.after[kWifi + name];
    EXPECT_THAT(Found(run), Not(Contains(std::string("document-unreadable: ") + name + " is not JSON")));
  }
}

TEST(DetectFindings, TellsLegacyFilesThatAreLost) {
  for (const std::string& path :
       {std::string(Household::kPolicy), std::string(Household::kGuestPolicy),
        std::string(Household::kBroadcast), std::string(Household::kWPS), std::string(Household::k5),
        kWifi + "lbd.conf", kWifi + "lbd.guest.conf", kWifi + "wifi_nvram"}) {
    Household household;
    household.Files().Write(path, household.Files().Read(path) + "# made different from others\n");
    lab::RunResult run = household.Update();
    ASSERT_THAT(Found(run), IsEmpty());
    lab::Entry& archived = run.after.at(kWifi + "legacy" + path.substr(path.rfind('/')));
    archived.content += "x";
    const std::string lost = "legacy-file-lost: " + path + " is neither there nor in the archive";
    EXPECT_THAT(Found(run), ElementsAre(lost));
    run.after.erase(kWifi + "legacy" + path.substr(path.rfind('/')));
    EXPECT_THAT(Found(run), ElementsAre(lost));
    run.after[path] = run.before[path];
    EXPECT_THAT(Found(run), IsEmpty());
  }
}

TEST(DetectFindings, NeedsNoLogToJudgeAValue) {
  Household household;
  household.Set(Household::k24, "security", "WPA2");
  lab::RunResult run = household.Update();
  run.log.clear();
  EXPECT_THAT(Found(run), ElementsAre("security-unknown: wifi_ap_02:11:32:00:00:04: security=WPA2"));
}

TEST(FindingKinds, HaveIdsOfTheirOwnAndWordsForAllThatIsAsked) {
  std::set<std::string_view> ids;
  for (const lab::FindingKind& kind : lab::FindingKinds()) {
    EXPECT_TRUE(ids.insert(kind.id).second) << kind.id;
    EXPECT_NE(kind.title, "") << kind.id;
    EXPECT_TRUE(kind.meaning.ends_with('.')) << kind.id;
    EXPECT_TRUE(kind.remedy.ends_with('.')) << kind.id;
    EXPECT_EQ(lab::FindFindingKind(kind.id), &kind);
  }
  EXPECT_EQ(lab::FindFindingKind("no-such-finding"), nullptr);
}

TEST(FindingKinds, AreInTheOrderOfTheirSeverity) {
  EXPECT_TRUE(std::ranges::is_sorted(lab::FindingKinds(), {}, &lab::FindingKind::severity));
}

TEST(SeverityOfFindings, HasNames) {
  EXPECT_EQ(lab::SeverityName(lab::Severity::Breaks), "breaks");
  EXPECT_EQ(lab::SeverityName(lab::Severity::Weakens), "weakens");
  EXPECT_EQ(lab::SeverityName(lab::Severity::Changes), "changes");
  EXPECT_EQ(lab::SeverityName(lab::Severity::Notes), "notes");
}

}  // namespace
}  // namespace lab_test
