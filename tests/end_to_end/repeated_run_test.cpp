// The firmware may start the program again after it has done its work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

using ::testing::ElementsAre;
using testing_support::Error;
using testing_support::PrintLog;

void ExpectStopsAtNewConfiguration(lab::PrivateRoot& device) {
  const lab::RunResult run = UpdateFrom(device, "8000");
  ExpectSuccess(run);
  EXPECT_THAT(PrintLog(run.log), ElementsAre(Error(225, "New config is existed, so stop migrating.")));
  ExpectUntouched(run);
}

TEST(RepeatedRun, SecondRunFrom125DoesNothing) {
  for (const char* image :
       {"dual-band-standalone", "tri-band-mesh-router", "tri-band-repeater", "dual-band-bridge"}) {
    SCOPED_TRACE(image);
    lab::PrivateRoot device(Image(image));
    ExpectSuccess(UpdateFrom(device, "8000"));
    ExpectStopsAtNewConfiguration(device);
  }
}

TEST(RepeatedRun, RunThatFailedAtTheArchiveIsNotRepeated) {
  lab::PrivateRoot device(Image("failing-archive"));
  ExpectFailure(UpdateFrom(device, "8000"), "8000");
  ExpectStopsAtNewConfiguration(device);
}

// The global document is written before anything else can fail.
TEST(RepeatedRun, RunThatFailedAfterTheGlobalDocumentIsNotRepeated) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  const std::string information = device.Read(kInformation);
  DropKey(device, kInformation, "wps_pin");
  ExpectFailure(UpdateFrom(device, "8000"), "8000");
  device.Write(kInformation, information);
  ExpectStopsAtNewConfiguration(device);
}

TEST(RepeatedRun, SecondRunFrom13MissesTheConsumedFiles) {
  lab::PrivateRoot device(Image("release-13-mesh"));
  ExpectSuccess(UpdateFrom(device, "9000"));

  const lab::RunResult run = UpdateFrom(device, "9000");

  ExpectFailure(run, "9000", "some old config files are not existed.");
  EXPECT_EQ(run.log.size(), 1U);
  ExpectUntouched(run);
}

TEST(RepeatedRun, FailedRunFrom13CanBeRepeated) {
  lab::PrivateRoot device(Image("release-13-mesh"));
  const std::string country = device.Read(kWifi + "country.json");
  device.Write(kWifi + "country.json", "{\"country_code\": \"nl\"}");
  ExpectFailure(UpdateFrom(device, "9000"), "9000");
  device.Write(kWifi + "country.json", country);

  ExpectSuccess(UpdateFrom(device, "9000"));
}

}  // namespace
}  // namespace end_to_end
