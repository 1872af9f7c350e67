// A device that has new documents is left alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/updater_run.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing_support::Error;
using testing_support::PrintLog;
using testing_support::Warning;

const std::string kGlobal = kWifi + "global.json";
const std::string kMisc = kWifi + "misc.json";

class SkipRule : public ::testing::Test {
 protected:
  void ExpectSkipped() {
    const lab::RunResult run = UpdateFrom(device_, "8000");
    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAre(Error(225, "New config is existed, so stop migrating.")));
    ExpectUntouched(run);
  }

  void ExpectMigrated() {
    const lab::RunResult run = UpdateFrom(device_, "8000");
    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAre(Warning(229, "Start to migrate config from 1.2.5 to 1.3")));
  }

  void ExpectUntestable(const std::string& path) {
    const lab::RunResult run = UpdateFrom(device_, "8000");
    EXPECT_THAT(ExpectFailure(run, "8000"), AllOf(StartsWith("filesystem error"), HasSubstr(path)));
    EXPECT_EQ(run.log.size(), 1U);
    ExpectUntouched(run);
  }

  lab::PrivateRoot device_{Image("dual-band-standalone")};
};

TEST_F(SkipRule, GlobalDocument) {
  device_.Write(kGlobal, "{}");
  ExpectSkipped();
}

TEST_F(SkipRule, EmptyGlobalDocument) {
  device_.Write(kGlobal, "");
  ExpectSkipped();
}

TEST_F(SkipRule, FolderInPlaceOfTheGlobalDocument) {
  device_.MakeDirectory(kGlobal);
  ExpectSkipped();
}

TEST_F(SkipRule, FifoInPlaceOfTheGlobalDocument) {
  device_.MakeFifo(kGlobal);
  ExpectSkipped();
}

TEST_F(SkipRule, LinkToAGlobalDocument) {
  device_.Write("/tmp/elsewhere.json", "{}");
  device_.Link(kGlobal, "/tmp/elsewhere.json");
  ExpectSkipped();
}

TEST_F(SkipRule, MiscDocumentAlone) {
  device_.Write(kMisc, "{}");
  ExpectSkipped();
}

TEST_F(SkipRule, FolderInPlaceOfTheMiscDocument) {
  device_.MakeDirectory(kMisc);
  ExpectSkipped();
}

TEST_F(SkipRule, BothDocuments) {
  device_.Write(kGlobal, "{}");
  device_.Write(kMisc, "{}");
  ExpectSkipped();
}

TEST_F(SkipRule, OtherDocumentsDoNotCount) {
  for (const char* name :
       {"radio.json", "wps.json", "network.json.default", "global.json.new", "misc.json.new"}) {
    device_.Write(kWifi + name, "left by an interrupted run");
  }
  ExpectMigrated();
  EXPECT_FALSE(device_.Exists(kGlobal + ".new"));
  EXPECT_FALSE(device_.Exists(kMisc + ".new"));
}

// A link to nothing is no document; the document that is written takes the link's place.
TEST_F(SkipRule, DanglingLinksDoNotCount) {
  device_.Link(kGlobal, "/tmp/nothing");
  device_.Link(kMisc, "nothing-either");
  ExpectMigrated();

  const lab::Tree tree = device_.Snapshot();
  EXPECT_EQ(tree.at(kGlobal).kind, lab::Entry::Kind::File);
  EXPECT_EQ(tree.at(kMisc).kind, lab::Entry::Kind::File);
  EXPECT_FALSE(device_.Exists("/tmp/nothing"));
  EXPECT_FALSE(device_.Exists(kWifi + "nothing-either"));
}

TEST_F(SkipRule, GlobalDocumentThatCannotBeTestedFailsTheRun) {
  device_.Link(kGlobal, kGlobal);
  device_.Write(kMisc, "{}");  // is not asked
  ExpectUntestable(kGlobal);
}

TEST_F(SkipRule, MiscDocumentThatCannotBeTestedFailsTheRun) {
  device_.Link(kMisc, kMisc);
  ExpectUntestable(kMisc);
}

TEST_F(SkipRule, MiscDocumentIsNotTestedWhereThereIsAGlobalOne) {
  device_.Write(kGlobal, "{}");
  device_.Link(kMisc, kMisc);
  ExpectSkipped();
}

TEST_F(SkipRule, HoldsOnlyForTheOlderGeneration) {
  lab::PrivateRoot device(Image("release-13-mesh"));
  device.Write(kGlobal, "{}");

  ExpectSuccess(UpdateFrom(device, "9000"));

  EXPECT_NE(device.Read(kGlobal), "{}");
}

}  // namespace
}  // namespace end_to_end
