#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string kWifi = "/usr/kelp/etc/wifi/";

TEST(FindingsAboutTheRun, NameTheLegacyFileAtWhichTheArchiveStopped) {
  Household household;
  household.Files().Remove(kWifi + "lbd.guest.conf");
  EXPECT_THAT(Found(household), ElementsAre("archive-stopped: " + kWifi + "lbd.guest.conf is missing"));
}

TEST(FindingsAboutTheRun, TellAnArchiveThatCannotBeMade) {
  Household household;
  household.Files().Write(kWifi + "legacy", "no folder");
  EXPECT_THAT(Found(household), ElementsAre(StartsWith("archive-stopped: filesystem error: cannot create")));
  Household other;
  other.Files().Write(kWifi + "legacy/wifi_wps/file", "");
  EXPECT_THAT(Found(other),
              ElementsAre(StartsWith("archive-stopped: filesystem error: cannot rename: Is a dir")));
}

TEST(FindingsAboutTheRun, TellAnArchiveFromADocumentThatCannotBeWritten) {
  Household household;
  household.Files().Write(kWifi + "network.json.default", "[]");  // an earlier run's, and complete with it
  household.Files().Write(kWifi + "wps.json/file", "");
  const std::vector<std::string> found = Found(household);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_THAT(found.front(), StartsWith("migration-stopped: "));
}

TEST(FindingsAboutTheRun, TellARunThatTellsNothing) {
  Household household;
  lab::RunResult run = household.Update();
  run.after = run.before;
  run.log.resize(1);
  run.status = -1;
  run.signal = 11;
  ASSERT_EQ(lab::DetectFindings(run).size(), 1U);
  EXPECT_EQ(lab::DetectFindings(run).front().detail, "killed by signal 11");
  run.timed_out = true;
  EXPECT_EQ(lab::DetectFindings(run).front().detail, "did not end in time");
  EXPECT_EQ(lab::DetectFindings(run).front().kind->id, "migration-stopped");
}

TEST(FindingsAboutTheRun, TellARunThatWasKilledBehindItsDocuments) {
  Household household;
  lab::RunResult run = household.Update();
  run.status = -1;
  run.signal = 9;
  ASSERT_EQ(lab::DetectFindings(run).size(), 1U);
  EXPECT_EQ(lab::DetectFindings(run).front().kind->id, "archive-stopped");
}

void MakeGlobalFiles(Household& household) {
  household.Files().Write(kWifi + "model.json", R"({"connected_models": []})");
  household.Files().Write(kWifi + "country.json", R"({"country_code": "DE"})");
  household.Files().Write(kWifi + "backhaul.json", R"({"radio_frequencies": ["Band5GHz_1"]})");
}

TEST(FindingsAboutTheRun, TellAnUpdateOfGlobalFilesThatHadBeenDone) {
  Household household;
  MakeGlobalFiles(household);
  EXPECT_THAT(Found(household, "9000"), IsEmpty());
  EXPECT_THAT(Found(household, "9000"), ElementsAre("update-repeated: global.json is there"));
  Household other;
  EXPECT_THAT(Found(other, "9000"), ElementsAre("migration-stopped: some old config files are not existed."));
}

TEST(FindingsAboutTheRun, TellWhyTheUpdateStopped) {
  Household household;
  household.Set(Household::kInformation, "kelpbios", "ORCHID");
  EXPECT_THAT(Found(household), ElementsAre("migration-stopped: Invalid kelpbios value: ORCHID"));
}

TEST(FindingsAboutTheRun, TellARunThatAnEarlierOneBlocks) {
  Household household;
  household.Drop(Household::kInformation, "wps_pin");
  household.Update();
  household.Set(Household::kInformation, "wps_pin", "12345670");
  EXPECT_THAT(Found(household),
              ElementsAre("blocked-by-earlier-run: missing: misc.json, radio.json, wps.json, network.json"));
}

TEST(FindingsAboutTheRun, CountATornDocumentAsMissing) {
  Household household;
  household.Update();
  household.Files().Write(kWifi + "radio.json", "[{");
  EXPECT_THAT(Found(household), ElementsAre("blocked-by-earlier-run: missing: radio.json"));
}

TEST(FindingsAboutTheRun, KnowTheNetworkDocumentOfEachTopology) {
  Household household;
  household.Set(Household::kInformation, "net_topology", "bridge");
  household.Update();
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
