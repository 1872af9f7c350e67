#include "cli/update_handler.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "tests/support/captured_streams.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::ConsoleResult;
using testing_support::Error;
using testing_support::LogLines;
using testing_support::Warning;

constexpr const char* kNoOldFiles = "some old config files are not existed.";

std::string NothingToUpdate(const std::string& number) {
  return Warning(120, "update nothing from " + number + ".");
}
std::string Failed(const std::string& what, const std::string& build_number) {
  return Error(954, "Failed to update config, error: " + what + ", buildNumber: " + build_number);
}

const std::string kStart125 = Warning(229, "Start to migrate config from 1.2.5 to 1.3");
const std::string kSkip125 = Error(225, "New config is existed, so stop migrating.");

/// A device that is known, with nothing to migrate: a build below 8228 is skipped, one below 9225 fails.
class UpdateHandlerTest : public ::testing::Test {
 protected:
  UpdateHandlerTest() {
    device_.WriteInfo({{"kelpbios", "orchid"}, {"mesh_network_role", "re"}});
    device_.Files().Write("/usr/kelp/etc/wifi/global.json", "{}");
  }

  ConsoleResult Update(const std::string& build_number) {
    return device_.Run(
        [&] { return testing_support::RunOnConsole([&] { return UpdateConfig(build_number); }); });
  }
  void ExpectFailure(const std::string& build_number, const std::string& what) {
    const ConsoleResult result = Update(build_number);
    EXPECT_EQ(result.status, 1) << build_number;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Failed to update config, error: " + what + "\n");
    EXPECT_EQ(device_.Log(), LogLines{Failed(what, build_number)});
  }
  void ExpectSuccess(const std::string& build_number, const std::string& line) {
    const ConsoleResult result = Update(build_number);
    EXPECT_EQ(result.status, 0) << build_number;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(device_.Log(), LogLines{line}) << build_number;
  }

  testing_support::TestDevice device_;
};

// Thresholds

TEST_F(UpdateHandlerTest, BuildsBelow8228AreOfGeneration125) {
  ExpectSuccess("8227", kSkip125);
  ExpectSuccess("0", kSkip125);
  ExpectSuccess("1", kSkip125);
  ExpectSuccess("-5", kSkip125);
  ExpectSuccess("-2147483648", kSkip125);
}

TEST_F(UpdateHandlerTest, BuildsFrom8228To9224AreOfGeneration13) {
  ExpectFailure("8228", kNoOldFiles);
  ExpectFailure("9000", kNoOldFiles);
  ExpectFailure("9224", kNoOldFiles);
}

TEST_F(UpdateHandlerTest, BuildsFrom9225OnHaveNothingToUpdate) {
  ExpectSuccess("9225", NothingToUpdate("9225"));
  ExpectSuccess("10000", NothingToUpdate("10000"));
  ExpectSuccess("2147483647", NothingToUpdate("2147483647"));
}

TEST_F(UpdateHandlerTest, NothingToUpdateTouchesNothing) {
  const lab::Tree before = device_.Files().Snapshot();
  Update("9225");
  EXPECT_EQ(device_.Files().Snapshot(), before);
}

// Build numbers as texts

TEST_F(UpdateHandlerTest, BuildNumberIsTheDecimalNumberAtTheStartOfItsText) {
  ExpectSuccess(" 9300", NothingToUpdate("9300"));
  ExpectSuccess("\t\n 9300", NothingToUpdate("9300"));
  ExpectSuccess("+9300", NothingToUpdate("9300"));
  ExpectSuccess("09300", NothingToUpdate("9300"));
  ExpectSuccess("9300abc", NothingToUpdate("9300"));
  ExpectSuccess("9300.99", NothingToUpdate("9300"));
  ExpectSuccess("9300 8000", NothingToUpdate("9300"));
  ExpectSuccess("0x9300", kSkip125);
  ExpectSuccess("9e3", kSkip125);
}

TEST_F(UpdateHandlerTest, TrailingTextKeepsTheGeneration) {
  ExpectFailure("8300abc", kNoOldFiles);
}

TEST_F(UpdateHandlerTest, TextWithoutANumberFails) {
  for (const char* text : {"abc", "", " ", "-", "+", "- 5", "--5", "x9300", ".5"})
    ExpectFailure(text, "stoi");
}

TEST_F(UpdateHandlerTest, NumberBeyond32BitsFails) {
  for (const char* text : {"99999999999", "2147483648", "-2147483649", "-99999999999", "4294967296",
                           "99999999999999999999999999999"}) {
    ExpectFailure(text, "stoi");
  }
}

TEST_F(UpdateHandlerTest, FailureShowsTheBuildNumberAsItWasGiven) {
  ExpectFailure(" 08300 abc", kNoOldFiles);
  ExpectFailure("abc%s%n%d", "stoi");
  ExpectFailure("+8228\xff", kNoOldFiles);
}

// The device's facts

TEST_F(UpdateHandlerTest, UnknownModelFailsEveryBuild) {
  device_.WriteInfo({{"kelpbios", "ORCHID"}, {"mesh_network_role", "re"}});
  for (const char* build_number : {"8000", "9000", "9225", "20000"}) {
    ExpectFailure(build_number, "Invalid kelpbios value: ORCHID");
  }
}

TEST_F(UpdateHandlerTest, MissingModelFailsEveryBuild) {
  device_.WriteInfo({{"mesh_network_role", "re"}});
  const ConsoleResult result = Update("9225");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.err.starts_with("Failed to update config, error: "));
  EXPECT_EQ(device_.Log().size(), 1U);
}

TEST_F(UpdateHandlerTest, MeshRoleIsReadBeforeTheModelAndBeforeTheDispatch) {
  device_.WriteInfo({{"kelpbios", "orchid"}});
  const auto is_role_line = [](const std::string& line) {
    return line.starts_with(Error(140, "Failed to get mesh role, error: "));
  };
  EXPECT_EQ(Update("9225").status, 0);
  ASSERT_EQ(device_.Log().size(), 2U);
  EXPECT_TRUE(is_role_line(device_.Log()[0])) << device_.Log()[0];
  EXPECT_EQ(device_.Log()[1], NothingToUpdate("9225"));

  device_.WriteInfo({{"kelpbios", "oak"}});
  EXPECT_EQ(Update("9225").status, 1);
  ASSERT_EQ(device_.Log().size(), 2U);
  EXPECT_TRUE(is_role_line(device_.Log()[0])) << device_.Log()[0];
  EXPECT_EQ(device_.Log()[1], Failed("Invalid kelpbios value: oak", "9225"));
}

TEST_F(UpdateHandlerTest, BuildNumberIsConvertedBeforeTheDeviceIsAsked) {
  device_.Files().Remove("/usr/kelp/etc/info.conf");
  ExpectFailure("abc", "stoi");
}

TEST_F(UpdateHandlerTest, FactsReachThePipeline) {
  device_.Files().Remove("/usr/kelp/etc/wifi/global.json");
  device_.WriteInfo({{"kelpbios", "maple"},
                     {"mesh_network_role", "re"},
                     {"country_code", "DE"},
                     {"mesh_swap_backhaul_band", "no"}});
  // The driver fails for want of a WPS PIN.
  EXPECT_EQ(Update("8000").status, 1);
  const std::string document = device_.Files().Read("/usr/kelp/etc/wifi/global.json");
  EXPECT_NE(document.find("MAPLE"), std::string::npos) << document;
  EXPECT_NE(document.find("true"), std::string::npos) << document;  // a repeater
  ASSERT_EQ(device_.Log().size(), 2U);
  EXPECT_EQ(device_.Log()[0], kStart125);
  EXPECT_TRUE(device_.Log()[1].starts_with(Error(954, "Failed to update config, error: ")));
  EXPECT_TRUE(device_.Log()[1].ends_with(", buildNumber: 8000"));
}

TEST_F(UpdateHandlerTest, FailureIsReportedWithTheWholeCause) {
  device_.WriteInfo({{"kelpbios", "%s\xff \"oak\""}, {"mesh_network_role", "re"}});
  ExpectFailure("9225", "Invalid kelpbios value: %s\xff \"oak\"");
}

TEST_F(UpdateHandlerTest, LongCausesAreReportedWhole) {
  const std::string word(20000, 'k');
  device_.WriteInfo({{"kelpbios", word}, {"mesh_network_role", "re"}});
  ExpectFailure("9225", "Invalid kelpbios value: " + word);
}

// DispatchUpdate

class DispatchUpdateTest : public UpdateHandlerTest {
 protected:
  /// The lines of a context with this build number; those of a failed generation 1.3 end with its exception's
  /// text.
  LogLines Dispatch(std::int32_t build_number) {
    std::string what;
    try {
      device_.Run([&] { DispatchUpdate({build_number, MeshRole::Standalone, Util::SupportedModel::CEDAR}); });
    } catch (const std::runtime_error& error) {
      what = error.what();
    }
    LogLines lines = device_.Log();
    if (!what.empty()) lines.push_back(what);
    return lines;
  }
};

TEST_F(DispatchUpdateTest, ThresholdsAreThoseOfTheBuildNumber) {
  EXPECT_EQ(Dispatch(std::numeric_limits<std::int32_t>::min()), LogLines{kSkip125});
  EXPECT_EQ(Dispatch(-1), LogLines{kSkip125});
  EXPECT_EQ(Dispatch(8227), LogLines{kSkip125});
  EXPECT_EQ(Dispatch(8228), LogLines{kNoOldFiles});
  EXPECT_EQ(Dispatch(9224), LogLines{kNoOldFiles});
  EXPECT_EQ(Dispatch(9225), LogLines{NothingToUpdate("9225")});
  EXPECT_EQ(Dispatch(std::numeric_limits<std::int32_t>::max()), LogLines{NothingToUpdate("2147483647")});
}

TEST_F(DispatchUpdateTest, AsksTheDeviceNothingForANewBuild) {
  device_.Files().Remove("/usr");
  EXPECT_EQ(Dispatch(9225), LogLines{NothingToUpdate("9225")});
}

TEST_F(DispatchUpdateTest, LetsThePipelinesFailureThrough) {
  EXPECT_EQ(device_.RunThrowing<std::runtime_error>([] {
    DispatchUpdate({9000, MeshRole::Standalone, Util::SupportedModel::CEDAR});
  }),
            kNoOldFiles);
  EXPECT_EQ(device_.Log(), LogLines{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
