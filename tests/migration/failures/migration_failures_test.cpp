#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "migration/global_settings.h"
#include "migration/legacy_archive.h"
#include "migration/migrate_125_to_13.h"
#include "migration/migrate_13_global_files.h"
#include "platform/exceptions.h"
#include "tests/migration/legacy_household.h"
#include "tests/support/failing_calls.h"
#include "tests/support/failing_platform.h"
#include "tests/support/json_text.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using std::filesystem::filesystem_error;
using ::testing::ElementsAre;
using testing_support::FailingFormat;
using testing_support::FailingPlatform;
using testing_support::LogLines;

constexpr const char* kDocument = "/usr/kelp/etc/wifi/global.json";
constexpr const char* kModelFile = "/usr/kelp/etc/wifi/model.json";
constexpr const char* kCountryFile = "/usr/kelp/etc/wifi/country.json";
constexpr const char* kBackhaulFile = "/usr/kelp/etc/wifi/backhaul.json";

// The archive's names

TEST(ArchiveFormatFailure, ThrowsAndLeavesTheFilesInPlace) {
  testing_support::TestDevice device;
  device.Files().Write("/etc/a", "a");
  device.Files().MakeDirectory("/usr/kelp/etc/wifi");
  const FailingFormat failing("%s%s");
  EXPECT_EQ(device.RunThrowing<RuntimeError>([] { ArchiveLegacyFiles({"/etc/a"}); }),
            "Error during formatting.: runtime error");
  EXPECT_EQ(device.Files().Read("/etc/a"), "a");
  EXPECT_TRUE(device.Files().Exists("/usr/kelp/etc/wifi/legacy"));
  EXPECT_EQ(device.Log(), LogLines{});
}

// What is on the disk before what

TEST(ArchiveFlush, StandsBehindTheArchiveAndBeforeTheFirstMoveWhetherTheArchiveWasThereOrNot) {
  for (const bool is_there : {false, true}) {
    testing_support::TestDevice device;
    device.Files().MakeDirectory("/usr/kelp/etc/wifi");
    if (is_there) device.Files().MakeDirectory("/usr/kelp/etc/wifi/legacy");
    device.Files().Write("/etc/a", "a");
    device.Files().Write("/etc/b", "b");
    const FailingPlatform watched;
    device.Run([] { ArchiveLegacyFiles({"/etc/b", "/etc/a"}); });
    EXPECT_THAT(watched.steps, ElementsAre("flush /usr/kelp/etc/wifi/", "rename /etc/a", "rename /etc/b"));
  }
}

TEST(ArchiveFlush, FailsWithTheArchiveMadeAndNothingMoved) {
  testing_support::TestDevice device;
  device.Files().MakeDirectory("/usr/kelp/etc/wifi");
  device.Files().Write("/etc/a", "a");
  FailingPlatform failing;
  failing.flush_fails = true;
  EXPECT_EQ(device.RunThrowing<std::system_error>([] { ArchiveLegacyFiles({"/etc/a"}); }),
            "cannot flush directory /usr/kelp/etc/wifi/: Input/output error");
  EXPECT_TRUE(device.Files().Exists("/usr/kelp/etc/wifi/legacy"));
  EXPECT_EQ(device.Files().Read("/etc/a"), "a");
}

// Which radio is asked for what, and when

using testing_support::LegacyHousehold;

/// The questions about USB 3 and WPS of a migration.
std::vector<std::string> QuestionsOf(LegacyHousehold& household) {
  const FailingPlatform watched;
  household.Run([&] { Migrate125To13(household.context); });
  std::vector<std::string> questions = watched.questions;
  std::erase_if(questions, [](const std::string& question) {
    return question != "usb3" && !question.ends_with(" ap_enable_wps");
  });
  return questions;
}

std::string WPSOf(const std::string& file) {
  return file + " ap_enable_wps";
}

TEST(RadioQuestions, EachRadioIsBuiltAndThenAskedForWPSUntilOneHasIt) {
  LegacyHousehold none;
  none.JoinMesh();
  EXPECT_THAT(QuestionsOf(none),
              ElementsAre("usb3", WPSOf(LegacyHousehold::k24File), "usb3", WPSOf(LegacyHousehold::k5File),
                          "usb3", WPSOf(LegacyHousehold::kSecondMeshFile)));

  LegacyHousehold second;
  second.JoinMesh();
  second.WriteAccessPoint(LegacyHousehold::k5File, {{"ap_enable_wps", "yes"}});
  EXPECT_THAT(QuestionsOf(second), ElementsAre("usb3", WPSOf(LegacyHousehold::k24File), "usb3",
                                               WPSOf(LegacyHousehold::k5File), "usb3"));

  LegacyHousehold first;
  first.WriteAccessPoint(LegacyHousehold::k24File, {{"ap_enable_wps", "yes"}});
  EXPECT_THAT(QuestionsOf(first), ElementsAre("usb3", WPSOf(LegacyHousehold::k24File), "usb3"));
}

// Removing the 1.3-era files

class RemovalFailureTest : public ::testing::Test {
 protected:
  RemovalFailureTest() {
    device_.WriteInfo({{"kelpbios", "lotus"}});
    device_.Files().Write(kModelFile, R"({"connected_models": ["ORCHID"]})");
    device_.Files().Write(kCountryFile, R"({"country_code": "DE"})");
    device_.Files().Write(kBackhaulFile, R"({"radio_frequencies": []})");
  }

  void MigrateWithout(const char* path) {
    FailingPlatform failing;
    failing.path_that_stays = path;
    EXPECT_THROW(device_.Run([] { Migrate13GlobalFiles({}); }), filesystem_error);
    EXPECT_EQ(device_.Log(), LogLines{});
    EXPECT_EQ(testing_support::ParseJson(device_.Files().Read(kDocument))["logLevel"], 2);
    EXPECT_TRUE(device_.Files().Exists(kBackhaulFile));
  }

  testing_support::TestDevice device_;
};

TEST_F(RemovalFailureTest, NothingIsRemovedBeforeTheDocumentIsDurable) {
  const FailingPlatform watched;
  device_.Run([] { Migrate13GlobalFiles({}); });
  EXPECT_THAT(watched.steps,
              ElementsAre("save /usr/kelp/etc/wifi/global.json", "flush /usr/kelp/etc/wifi/",
                          "remove /usr/kelp/etc/wifi/model.json", "remove /usr/kelp/etc/wifi/country.json"));
}

TEST_F(RemovalFailureTest, NothingIsRemovedWhenTheFlushFails) {
  FailingPlatform failing;
  failing.flush_fails = true;
  EXPECT_EQ(device_.RunThrowing<std::system_error>([] { Migrate13GlobalFiles({}); }),
            "cannot flush directory /usr/kelp/etc/wifi/: Input/output error");
  EXPECT_TRUE(device_.Files().Exists(kDocument));
  EXPECT_TRUE(device_.Files().Exists(kModelFile));
  EXPECT_TRUE(device_.Files().Exists(kCountryFile));
}

TEST_F(RemovalFailureTest, FileThatIsGoneAlreadyIsNoFailure) {
  FailingPlatform failing;
  failing.path_that_goes_before = kModelFile;
  device_.Run([] { Migrate13GlobalFiles({}); });
  EXPECT_FALSE(device_.Files().Exists(kModelFile));
  EXPECT_FALSE(device_.Files().Exists(kCountryFile));
}

TEST_F(RemovalFailureTest, ModelFileThatStaysKeepsTheCountryFileToo) {
  MigrateWithout(kModelFile);
  EXPECT_TRUE(device_.Files().Exists(kModelFile));
  EXPECT_TRUE(device_.Files().Exists(kCountryFile));
}

TEST_F(RemovalFailureTest, CountryFileThatStaysIsTheOnlyOne) {
  MigrateWithout(kCountryFile);
  EXPECT_FALSE(device_.Files().Exists(kModelFile));
  EXPECT_TRUE(device_.Files().Exists(kCountryFile));
}

// What is no std::exception

TEST(GlobalSettingsFailure, OnlyStandardExceptionsFallBack) {
  testing_support::TestDevice device;
  device.WriteInfo({{"country_code", "DE"}, {"mesh_swap_backhaul_band", "yes"}});
  device.Files().MakeDirectory("/usr/kelp/etc/wifi");
  FailingPlatform failing;
  for (const char* key : {"country_code", "mesh_swap_backhaul_band"}) {
    failing.key_that_throws = key;
    EXPECT_THROW(device.Run([] { MigrateGlobalSettings({}); }), int) << key;
    EXPECT_EQ(device.Log(), LogLines{});
    EXPECT_FALSE(device.Files().Exists(kDocument));
  }
}

}  // namespace
}  // namespace KELP::Wifi::Updater
