#include <gtest/gtest.h>

#include "cli/update_handler.h"
#include "tests/cli/failing_facts.h"
#include "tests/support/captured_streams.h"
#include "tests/support/failing_allocation.h"
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
  const testing_support::FailingFacts failing;
  ConsoleResult result;
  EXPECT_THROW(
      device.Run([&] { result = testing_support::RunOnConsole([] { return UpdateConfig("9300"); }); }), int);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(device.Log(), LogLines{});
}

/// Runs build `build_number` with memory for more and more allocations until it runs out no more, each time
/// on a device that `lay_out` makes. Every run must end with status 0, or with 1 and one report.
template <typename LayOut, typename Check>
void RunOutOfMemoryEverywhere(const std::string& build_number, LayOut lay_out, Check check) {
  int failures = 0;
  for (int succeeding = 0; succeeding < 5000; ++succeeding) {
    testing_support::TestDevice device;
    lay_out(device);
    int failed = 0;
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
      break;
    }
    failures += result.status;
  }
  EXPECT_GT(failures, 0);
}

TEST(UpdateHandlerFailures, RunningOutOfMemoryIsReported) {
  RunOutOfMemoryEverywhere(
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
  RunOutOfMemoryEverywhere(
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

}  // namespace
}  // namespace KELP::Wifi::Updater
