// Which migration each build number starts, and what is found out about the device before any of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/edits.h"
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

const std::string kNoRole = Error(140, "Failed to get mesh role, error: ");

std::string NothingToDo(const std::string& number) {
  return Warning(120, "update nothing from " + number + ".");
}

void ExpectMigrationFrom125(const std::string& build) {
  SCOPED_TRACE(build);
  lab::PrivateRoot device(Image("dual-band-standalone"));
  const lab::RunResult run = UpdateFrom(device, build);
  ExpectSuccess(run);
  EXPECT_THAT(PrintLog(run.log), ElementsAre(Warning(229, "Start to migrate config from 1.2.5 to 1.3")));
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
    EXPECT_THAT(PrintLog(run.log), ElementsAre(NothingToDo(number)));
    ExpectUntouched(run);
  }
}

/// The run fails with one line whatever the build asks for, and leaves the device as it was. Gives the
/// failure.
std::string FailEvery(const Edits& edits, std::size_t lines = 1) {
  std::string what;
  for (const char* build : {"8000", "9000", "9300"}) {
    SCOPED_TRACE(build);
    lab::PrivateRoot device = Edited("release-13-mesh", edits);
    const lab::RunResult run = UpdateFrom(device, build);
    what = ExpectFailure(run, build);
    EXPECT_EQ(run.log.size(), lines);
    ExpectUntouched(run);
  }
  return what;
}

TEST(Dispatch, BuildsBelow8228AreOfGeneration125) {
  for (const char* build : {"8227", "8000", "0", "-0", "-5", "-2147483648", "  8227", "+8227", "08227",
                            "\t\n\v\f\r 1", "0x2400", "9e3"}) {  // the two last: a digit, then text
    ExpectMigrationFrom125(build);
  }
}

TEST(Dispatch, Builds8228To9224AreOfGeneration13) {
  for (const char* build : {"8228", "9000", "9224", "+9224", " 8228", "8300abc", "9000.9"})
    ExpectMigrationFrom13(build);
}

TEST(Dispatch, BuildsFrom9225OnNeedNothing) {
  const std::pair<const char*, const char*> cases[] = {{"9225", "9225"},  {"2147483647", "2147483647"},
                                                       {" 9300", "9300"}, {"9300 8000", "9300"},
                                                       {"+9300", "9300"}, {"09300", "9300"}};
  for (const auto& [build, number] : cases) ExpectNothingToDo(build, number);
}

TEST(Dispatch, WhatIsNoNumberOf32BitsFailsBeforeTheDeviceIsAsked) {
  for (const std::string build :
       {"abc", "", " ", "-", "+", "- 5", "--5", "+-9300", "x9300", ".5", "%s%n",
        "\xC2\xA0"
        "9300",
        "99999999999", "2147483648", "-2147483649", "4294967296", "99999999999999999999999999"}) {
    SCOPED_TRACE(build);
    // Without the mesh file the role would have its line if it were asked for.
    lab::PrivateRoot device = Edited("dual-band-standalone", {Gone(kMesh)});
    const lab::RunResult run = UpdateFrom(device, build);
    ExpectFailure(run, build, "stoi");
    EXPECT_EQ(run.log.size(), 1U);
    ExpectUntouched(run);
  }
}

TEST(Dispatch, ModelThatIsUnknownOrCannotBeReadFailsEvenWhereNothingIsToBeDone) {
  for (const std::string& model :
       {std::string("ORCHID"), std::string("Error"), std::string(), std::string("orchid "),
        std::string("%s%n\xff \"oak"), std::string(20'000, 'k')}) {
    EXPECT_EQ(FailEvery({Fact("kelpbios", model)}), "Invalid kelpbios value: " + model);
  }
  EXPECT_EQ(FailEvery({Fact("kelpbios", "\"\"")}), "Invalid kelpbios value: ");
  EXPECT_NE(FailEvery({NoFact("kelpbios")}), "");
}

// The role is asked for first: it falls back with a line, then the model fails.
TEST(Dispatch, MissingInformationStoreCostsTheRoleAndThenTheRun) {
  EXPECT_NE(FailEvery({Gone(kInformation)}, 2), "");
  lab::PrivateRoot device = Edited("release-13-mesh", {Gone(kInformation)});
  EXPECT_THAT(PrintLog(UpdateFrom(device, "9300").log).front(), StartsWith(kNoRole));
}

TEST(Dispatch, MeshFileThatIsMissingOrBadCostsALineBeforeNothingIsDone) {
  std::vector<Edit> edits{Gone(kMesh)};
  for (const char* text : {"", "{", "[]", "{}", "{\"repeater_nodes\": {}}", "{\"repeater_nodes\": null}",
                           "{\"repeater_nodes\": []} x", "\xFF\xFE"}) {
    edits.push_back(File(kMesh, text));
  }
  for (const Edit& edit : edits) {
    lab::PrivateRoot device = Edited("dual-band-standalone", {edit});
    const lab::RunResult run = UpdateFrom(device, "9225");
    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAre(StartsWith(kNoRole), NothingToDo("9225")));
    ExpectUntouched(run);
  }
}

TEST(Dispatch, MeshFileIsNotAskedOnARepeater) {
  lab::PrivateRoot device = Edited("tri-band-repeater", {Gone(kMesh)});
  EXPECT_THAT(PrintLog(UpdateFrom(device, "9225").log), ElementsAre(NothingToDo("9225")));
}

TEST(Dispatch, ModelAndRoleReachTheMigration) {
  lab::PrivateRoot device = Edited("tri-band-repeater", {Fact("kelpbios", "maple")});
  UpdateFrom(device, "8000");
  EXPECT_THAT(device.Read(kWifi + "global.json"),
              ::testing::AllOf(::testing::HasSubstr("MAPLE"), ::testing::HasSubstr("\"isRepeater\" : true")));
}

}  // namespace
}  // namespace end_to_end
