// Which migration each build number starts, and what is found out about the device before any of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using testing_support::Error;
using testing_support::PrintLog;
using testing_support::Warning;

const std::string kStart = Warning(229, "Start to migrate config from 1.2.5 to 1.3");

void ExpectMigrationFrom125(const std::string& build) {
  SCOPED_TRACE(build);
  lab::PrivateRoot device(Image("dual-band-standalone"));
  const lab::RunResult run = UpdateFrom(device, build);
  ExpectSuccess(run);
  EXPECT_THAT(PrintLog(run.log), ElementsAre(kStart));
  EXPECT_TRUE(device.Exists(kArchive + "wifi_wps"));
}

void ExpectMigrationFrom13(const std::string& build) {
  SCOPED_TRACE(build);
  lab::PrivateRoot device(Image("release-13-mesh"));
  const lab::RunResult run = UpdateFrom(device, build);
  ExpectSuccess(run);
  EXPECT_THAT(PrintLog(run.log), IsEmpty());
  EXPECT_TRUE(device.Exists(kWifi + "global.json"));
  EXPECT_FALSE(device.Exists(kWifi + "model.json"));
}

void ExpectNothingToDo(const std::string& build, const std::string& number) {
  SCOPED_TRACE(build);
  for (const char* image : {"dual-band-standalone", "release-13-mesh"}) {
    lab::PrivateRoot device(Image(image));
    const lab::RunResult run = UpdateFrom(device, build);
    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAre(Warning(120, "update nothing from " + number + ".")));
    ExpectUntouched(run);
  }
}

void ExpectNoNumber(const std::string& build) {
  SCOPED_TRACE(build);
  lab::PrivateRoot device(Image("dual-band-standalone"));
  device.Remove(kMesh);  // which would have its line if the mesh role were asked for
  const lab::RunResult run = UpdateFrom(device, build);
  ExpectFailure(run, build, "stoi");
  EXPECT_EQ(run.log.size(), 1U);
  ExpectUntouched(run);
}

TEST(Dispatch, BuildsBelow8228AreOfGeneration125) {
  for (const char* build :
       {"8227", "8000", "0", "-0", "-5", "-2147483648", "  8227", "+8227", "\t\n\v\f\r 1"}) {
    ExpectMigrationFrom125(build);
  }
}

TEST(Dispatch, Builds8228To9224AreOfGeneration13) {
  for (const char* build : {"8228", "9000", "9224", "+9224", " 8228"}) ExpectMigrationFrom13(build);
}

TEST(Dispatch, BuildsFrom9225OnNeedNothing) {
  ExpectNothingToDo("9225", "9225");
  ExpectNothingToDo("2147483647", "2147483647");
}

TEST(Dispatch, LeadingBlankIsSkipped) {
  ExpectNothingToDo(" 9300", "9300");
}

TEST(Dispatch, TrailingTextIsIgnored) {
  ExpectMigrationFrom13("8300abc");
  ExpectMigrationFrom13("9000.9");
  ExpectNothingToDo("9300 8000", "9300");
  ExpectMigrationFrom125("0x2400");  // the digit 0, then text
}

TEST(Dispatch, TextWithoutADigitFirstIsNoNumber) {
  for (const char* build : {"abc", "", " ", "-", "+", "--5", "+-9300", "x9300", "v8000", "%s%n",
                            "\xC2\xA0"
                            "9300"}) {
    ExpectNoNumber(build);
  }
}

TEST(Dispatch, NumbersBeyond32BitsAreNone) {
  for (const char* build : {"99999999999", "2147483648", "-2147483649", "99999999999999999999999999"}) {
    ExpectNoNumber(build);
  }
}

TEST(Dispatch, UnknownModelFailsEvenWhereNothingIsToBeDone) {
  for (const char* build : {"8000", "9000", "9300"}) {
    for (const std::string model : {"ORCHID", "Error", "", "orchid ", "\"\"", "%s%n"}) {
      SCOPED_TRACE(build + (" " + model));
      lab::PrivateRoot device(Image("release-13-mesh"));
      SetInformation(device, "kelpbios", model);
      const lab::RunResult run = UpdateFrom(device, build);
      ExpectFailure(run, build, "Invalid kelpbios value: " + (model == "\"\"" ? "" : model));
      EXPECT_EQ(run.log.size(), 1U);
      ExpectUntouched(run);
    }
  }
}

TEST(Dispatch, ModelThatCannotBeReadFailsEvenWhereNothingIsToBeDone) {
  for (const char* build : {"8000", "9000", "9300"}) {
    lab::PrivateRoot device(Image("release-13-mesh"));
    DropKey(device, kInformation, "kelpbios");
    const lab::RunResult run = UpdateFrom(device, build);
    EXPECT_NE(ExpectFailure(run, build), "");
    EXPECT_EQ(run.log.size(), 1U);
    ExpectUntouched(run);
  }
}

// The role is asked for first: it falls back with a line, then the model fails.
TEST(Dispatch, MissingInformationStoreCostsTheRoleAndThenTheRun) {
  for (const char* build : {"8000", "9000", "9300"}) {
    lab::PrivateRoot device(Image("release-13-mesh"));
    device.Remove(kInformation);
    const lab::RunResult run = UpdateFrom(device, build);
    EXPECT_NE(ExpectFailure(run, build), "");
    ASSERT_EQ(run.log.size(), 2U);
    EXPECT_THAT(PrintLog(run.log).front(), StartsWith(Error(140, "Failed to get mesh role, error: ")));
    ExpectUntouched(run);
  }
}

TEST(Dispatch, MeshRoleIsReadBeforeNothingIsDone) {
  lab::PrivateRoot device(Image("dual-band-standalone"));
  device.Remove(kMesh);

  const lab::RunResult run = UpdateFrom(device, "9225");

  ExpectSuccess(run);
  EXPECT_THAT(PrintLog(run.log), ElementsAre(StartsWith(Error(140, "Failed to get mesh role, error: ")),
                                             Warning(120, "update nothing from 9225.")));
  ExpectUntouched(run);
}

TEST(Dispatch, MeshFileIsNotAskedOnARepeater) {
  lab::PrivateRoot device(Image("tri-band-repeater"));
  device.Remove(kMesh);

  EXPECT_THAT(PrintLog(UpdateFrom(device, "9225").log),
              ElementsAre(Warning(120, "update nothing from 9225.")));
}

TEST(Dispatch, BadMeshFileCountsAsNone) {
  for (const std::string text : {"", "{", "[]", "{}", "{\"repeater_nodes\": {}}",
                                 "{\"repeater_nodes\": null}", "{\"repeater_nodes\": []} x", "\xFF\xFE"}) {
    SCOPED_TRACE(text);
    lab::PrivateRoot device(Image("dual-band-standalone"));
    device.Write(kMesh, text);

    const lab::RunResult run = UpdateFrom(device, "9225");

    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAre(StartsWith(Error(140, "Failed to get mesh role, error: ")),
                                               Warning(120, "update nothing from 9225.")));
  }
}

}  // namespace
}  // namespace end_to_end
