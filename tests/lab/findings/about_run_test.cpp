#include "tests/lab/findings/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kWifi = "/usr/kelp/etc/wifi/";

TEST(FindingsAboutTheRun, NameTheLegacyFileAtWhichTheArchiveStopped) {
  Household household;
  household.Files().Remove(kWifi + "lbd.guest.conf");
  EXPECT_THAT(Found(household), ElementsAre("archive-stopped: " + kWifi + "lbd.guest.conf is missing"));
}

TEST(FindingsAboutTheRun, TellAnArchiveFromAnUpdateThatStopped) {
  Household household;
  household.Files().Write(kWifi + "legacy", "no folder");
  const std::vector<std::string> found = Found(household);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_THAT(found.front(), ::testing::StartsWith("migration-stopped: filesystem error: cannot create"));
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
