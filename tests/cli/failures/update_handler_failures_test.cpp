#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "cli/update_handler.h"
#include "tests/migration/legacy_household.h"
#include "tests/support/captured_streams.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_platform.h"
#include "tests/support/json_text.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::ConsoleResult;
using testing_support::Error;
using testing_support::FailingAllocation;
using testing_support::LogLines;

TEST(UpdateHandlerFailures, WhatIsNoStandardExceptionIsLetThrough) {
  testing_support::TestDevice device;
  device.WriteInfo({{"kelpbios", "orchid"}, {"mesh_network_role", "re"}});
  testing_support::FailingPlatform failing;
  failing.model_throws = true;
  ConsoleResult result;
  EXPECT_THROW(
      device.Run([&] { result = testing_support::RunOnConsole([] { return UpdateConfig("9300"); }); }), int);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(device.Log(), LogLines{});
}

/// Runs build `build_number` with memory for more and more allocations until it runs out no more, each time
/// on a Device that `lay_out` completes. Every run must end with status 0, or with 1 and one report.
template <typename Device, typename LayOut, typename Check>
void RunOutOfMemoryEverywhere(const std::string& build_number, LayOut lay_out, Check check) {
  int failures = 0;
  for (int succeeding = 0, failed = 1; failed > 0; ++succeeding) {
    Device device;
    lay_out(device);
    const ConsoleResult result = device.Run([&] {
      const testing_support::CapturedStream err(2);
      int status = -1;
      {
        const FailingAllocation failing(succeeding);
        status = UpdateConfig(build_number);
        failed = FailingAllocation::Failed();
      }
      return ConsoleResult{status, "", err.Text()};
    });
    if (result.status == 0) {
      EXPECT_EQ(result.err, "") << succeeding;
    } else {
      EXPECT_EQ(result.status, 1) << succeeding;
      EXPECT_TRUE(result.err.starts_with("Failed to update config, error: ")) << result.err;
      ASSERT_FALSE(device.Log().empty()) << succeeding;
      EXPECT_TRUE(device.Log().back().starts_with(Error(954, "Failed to update config, error: ")));
      EXPECT_TRUE(device.Log().back().ends_with(", buildNumber: " + build_number));
    }
    check(device, result.status);
    if (failed == 0) {
      EXPECT_EQ(result.status, 0);
    }
    failures += result.status;
  }
  EXPECT_GT(failures, 0);
}

TEST(UpdateHandlerFailures, RunningOutOfMemoryIsReported) {
  RunOutOfMemoryEverywhere<testing_support::TestDevice>(
      "9300",
      [](testing_support::TestDevice& device) {
        device.WriteInfo({{"kelpbios", "orchid"}, {"mesh_network_role", "re"}});
      },
      [](testing_support::TestDevice&, int) {});
}

TEST(UpdateHandlerFailures, RunningOutOfMemoryLosesNoOldFile) {
  constexpr const char* kModelFile = "/usr/kelp/etc/wifi/model.json";
  constexpr const char* kCountryFile = "/usr/kelp/etc/wifi/country.json";
  constexpr const char* kDocument = "/usr/kelp/etc/wifi/global.json";
  RunOutOfMemoryEverywhere<testing_support::TestDevice>(
      "9000",
      [&](testing_support::TestDevice& device) {
        device.WriteInfo({{"kelpbios", "orchid"}, {"mesh_network_role", "re"}});
        device.Files().Write(kModelFile, R"({"connected_models": ["LOTUS", "ORCHID"]})");
        device.Files().Write(kCountryFile, R"({"country_code": "DE"})");
        device.Files().Write("/usr/kelp/etc/wifi/backhaul.json", R"({"radio_frequencies": ["Band5GHz_2"]})");
      },
      [&](testing_support::TestDevice& device, int status) {
        EXPECT_FALSE(device.Files().Exists("/usr/kelp/etc/wifi/global.json.new"));
        if (!device.Files().Exists(kDocument)) {
          EXPECT_TRUE(device.Files().Exists(kModelFile));
          EXPECT_TRUE(device.Files().Exists(kCountryFile));
          EXPECT_EQ(status, 1);
          return;
        }
        EXPECT_EQ(testing_support::ParseJson(device.Files().Read(kDocument)),
                  testing_support::ParseJson(R"({"logLevel": 2, "defaultModel": "ORCHID",
                      "meshInfo": {"connectedModels": ["ORCHID", "LOTUS"], "isRepeater": false},
                      "countryCodeSetting": {"countryCode": "DE"}, "backhaulSwapped": true})"));
      });
}

/// The documents, and the legacy files by their last names wherever they stand.
struct Household {
  std::map<std::string, std::string> documents;
  std::multimap<std::string, std::string> legacy_files;
  bool has_leftover = false;

  explicit Household(const lab::Tree& files) {
    for (const auto& [path, entry] : files) {
      if (entry.kind != lab::Entry::Kind::File) continue;
      has_leftover |= path.ends_with(".new");
      if (path.find("/wifi/") == std::string::npos && path.find("/mac_filter/") == std::string::npos)
        continue;
      const bool is_document = path.find(".json") != std::string::npos;
      if (is_document) documents.emplace(path, entry.content);
      if (!is_document) legacy_files.emplace(path.substr(path.rfind('/')), entry.content);
    }
  }
};

TEST(UpdateHandlerFailures, RunningOutOfMemoryLosesNothingOfAHousehold) {
  testing_support::LegacyHousehold undisturbed;
  const Household before(undisturbed.Files().Snapshot());
  ASSERT_EQ(undisturbed.Run([] { return UpdateConfig("8000"); }), 0);
  const Household whole(undisturbed.Files().Snapshot());
  ASSERT_EQ(whole.documents.size(), 5U);
  ASSERT_EQ(before.legacy_files.size(), 11U);

  std::set<std::size_t> numbers_of_documents;
  RunOutOfMemoryEverywhere<testing_support::LegacyHousehold>(
      "8000", [](testing_support::LegacyHousehold&) {},
      [&](testing_support::LegacyHousehold& device, int status) {
        const Household after(device.Files().Snapshot());
        EXPECT_FALSE(after.has_leftover);
        EXPECT_EQ(after.legacy_files, before.legacy_files);
        for (const auto& [path, content] : after.documents)
          EXPECT_EQ(content, whole.documents.at(path)) << path;
        if (status == 0) {
          EXPECT_EQ(after.documents.size(), 5U);
        }
        numbers_of_documents.insert(after.documents.size());
      });
  // How many allocations lie between two documents depends on the clock: a file that has only just changed is
  // read anew.
  EXPECT_THAT(numbers_of_documents, ::testing::IsSupersetOf({0U, 1U, 5U}));
}

}  // namespace
}  // namespace KELP::Wifi::Updater
