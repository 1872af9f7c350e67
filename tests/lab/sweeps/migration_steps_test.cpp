#include "lab/sweeps/migration_steps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/sweeps/recorded_calls.h"

namespace lab::sweeps {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;
using Kind = MigrationStep::Kind;

const std::string kFolder = "/usr/kelp/etc/wifi/";
const Entry kLegacy{Entry::Kind::File, 0644, "old"};
const Entry kDocument{Entry::Kind::File, 0600, "{}"};
const Entry kArchiveFolder{Entry::Kind::Directory, 0755, ""};

std::vector<std::string> PathsOf(const std::vector<MigrationStep>& steps) {
  std::vector<std::string> paths;
  for (const MigrationStep& step : steps) paths.push_back(step.path);
  return paths;
}

TEST(StepsOf, Generation125WritesThenArchivesInTheOrderOfBytes) {
  EXPECT_THAT(PathsOf(StepsOf({{}, 8227}, {kFolder + "wifi_ap_b0:00", kFolder + "wifi_ap_B0:00"})),
              ElementsAre(kFolder + "global.json", kFolder + "misc.json", kFolder + "radio.json",
                          kFolder + "wps.json", kFolder + "network.json.", kFolder + "legacy",
                          "/etc/hostapd/mac_filter/mf.info", "/etc/hostapd/mac_filter/mf.setting",
                          "/etc/hostapd/mac_filter/mf_guest.info", kFolder + "lbd.conf",
                          kFolder + "lbd.guest.conf", kFolder + "wifi_ap_B0:00", kFolder + "wifi_ap_b0:00",
                          kFolder + "wifi_nvram", kFolder + "wifi_wps"));
}

TEST(StepsOf, AnArchiveThatIsThereIsNotMade) {
  for (const MigrationStep& step : StepsOf({{{kFolder + "legacy", kArchiveFolder}}, 8000}, {})) {
    EXPECT_NE(step.kind, Kind::ArchiveFolder);
  }
}

TEST(StepsOf, Generation13RemovesTheModelThenTheCountry) {
  EXPECT_THAT(PathsOf(StepsOf({{}, 8228}, {})),
              ElementsAre(kFolder + "global.json", kFolder + "model.json", kFolder + "country.json"));
}

TEST(AccessPointFilesIn, AreThoseLookedForAsWell) {
  EXPECT_THAT(AccessPointFilesIn(Calls({"openat(AT_FDCWD, '/usr/kelp/etc/wifi/wifi_ap_a', O_RDONLY) = 3",
                                        "openat(AT_FDCWD, '/usr/kelp/etc/wifi/wifi_ap_0', O_RDONLY) = -1 "
                                        "ENOENT (No such file or directory)",
                                        "openat(AT_FDCWD, '/usr/kelp/etc/wifi/wifi_wps', O_RDONLY) = 4"})),
              ElementsAre(kFolder + "wifi_ap_0", kFolder + "wifi_ap_a"));
}

TEST(StepMadeBy, IsACallThatChangesTheDeviceForGood) {
  const auto calls =
      Calls({"rename('/a', '/b') = 0", "rename('/a', '/b') = -1 EXDEV (Invalid cross-device link)",
             "mkdir('/a', 0777) = 0", "unlink('/a') = 0", "fsync(3) = 0"});
  EXPECT_EQ(StepMadeBy(calls[0], kFolder + "misc.json.new", kFolder + "misc.json")->kind, Kind::Document);
  EXPECT_EQ(StepMadeBy(calls[0], kFolder + "wifi_wps", kFolder + "legacy/wifi_wps")->kind, Kind::Move);
  EXPECT_EQ(StepMadeBy(calls[1], kFolder + "wifi_wps", kFolder + "legacy/wifi_wps"), std::nullopt);
  EXPECT_EQ(StepMadeBy(calls[2], kFolder + "legacy", "")->kind, Kind::ArchiveFolder);
  EXPECT_EQ(StepMadeBy(calls[3], kFolder + "model.json", "")->kind, Kind::Removal);
  EXPECT_EQ(StepMadeBy(calls[3], kFolder + "misc.json.new", ""), std::nullopt);
  EXPECT_EQ(StepMadeBy(calls[4], kFolder + "misc.json", ""), std::nullopt);
}

class CountStepsMadeTest : public ::testing::Test {
 protected:
  const std::vector<MigrationStep> steps_{{Kind::Document, kFolder + "wps.json"},
                                          {Kind::Document, kNetworkDocumentPrefix},
                                          {Kind::ArchiveFolder, kFolder + "legacy"},
                                          {Kind::Move, kFolder + "lbd.conf"},
                                          {Kind::Move, kFolder + "wifi_wps"}};
  const Tree before_{{kFolder + "lbd.conf", kLegacy}, {kFolder + "wifi_wps", kLegacy}};
};

TEST_F(CountStepsMadeTest, CountsFromTheFirst) {
  Tree after = before_;
  EXPECT_THAT(CountStepsMade(steps_, before_, after), Optional(0U));
  after[kFolder + "wps.json"] = kDocument;
  after[kFolder + "network.json.bridge.new"] = kDocument;
  EXPECT_THAT(CountStepsMade(steps_, before_, after), Optional(1U));
  after[kFolder + "network.json.bridge"] = kDocument;
  EXPECT_THAT(CountStepsMade(steps_, before_, after), Optional(2U));
  after[kFolder + "legacy"] = kArchiveFolder;
  after.erase(kFolder + "lbd.conf");
  EXPECT_THAT(CountStepsMade(steps_, before_, after), Optional(4U));
}

TEST_F(CountStepsMadeTest, SeesWhatWentOnBehindAFailure) {
  Tree after = before_;
  after[kFolder + "wps.json"] = kDocument;
  after[kFolder + "network.json.bridge"] = kDocument;
  after[kFolder + "legacy"] = kArchiveFolder;
  after.erase(kFolder + "wifi_wps");
  EXPECT_EQ(CountStepsMade(steps_, before_, after), std::nullopt);
}

TEST_F(CountStepsMadeTest, SeesDocumentsInAnotherOrder) {
  Tree after = before_;
  after[kFolder + "network.json.bridge"] = kDocument;
  EXPECT_EQ(CountStepsMade(steps_, before_, after), std::nullopt);
}

TEST_F(CountStepsMadeTest, AFileThatNeverWasThereStopsTheArchive) {
  Tree before = before_;
  before.erase(kFolder + "lbd.conf");
  Tree after = before;
  after[kFolder + "wps.json"] = kDocument;
  after[kFolder + "network.json.bridge"] = kDocument;
  after[kFolder + "legacy"] = kArchiveFolder;
  EXPECT_THAT(CountStepsMade(steps_, before, after), Optional(3U));
  after.erase(kFolder + "wifi_wps");
  EXPECT_EQ(CountStepsMade(steps_, before, after), std::nullopt);
}

TEST_F(CountStepsMadeTest, AnOldDocumentIsNotWritten) {
  Tree before = before_;
  before[kFolder + "wps.json"] = {Entry::Kind::File, 0600, "{\"earlier\": true}"};
  EXPECT_THAT(CountStepsMade(steps_, before, before), Optional(0U));
  Tree after = before;
  after[kFolder + "wps.json"] = kDocument;
  EXPECT_THAT(CountStepsMade(steps_, before, after), Optional(1U));
}

}  // namespace
}  // namespace lab::sweeps
