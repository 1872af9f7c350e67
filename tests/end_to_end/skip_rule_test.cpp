// A device that has new documents is left alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/end_to_end/device_tree.h"
#include "tests/end_to_end/edits.h"
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

constexpr const char* kDevice = "dual-band-standalone";
const std::string kGlobal = kWifi + "global.json";
const std::string kMisc = kWifi + "misc.json";

TEST(SkipRule, AnythingThatIsThereUnderEitherNameSkips) {
  const std::pair<const char*, Edits> cases[] = {
      {"global document", {File(kGlobal, "{}")}},
      {"empty global document", {File(kGlobal, "")}},
      {"folder", {Folder(kGlobal)}},
      {"FIFO", {Fifo(kGlobal)}},
      {"link to a document", {File("/tmp/elsewhere.json", "{}"), Link(kGlobal, "/tmp/elsewhere.json")}},
      {"misc document alone", {File(kMisc, "{}")}},
      {"folder in place of the misc document", {Folder(kMisc)}},
      {"both", {File(kGlobal, "{}"), File(kMisc, "{}")}},
      {"misc document that is not tested", {File(kGlobal, "{}"), Loop(kMisc)}},
  };
  for (const auto& [name, edits] : cases) {
    SCOPED_TRACE(name);
    lab::PrivateRoot device = Edited(kDevice, edits);
    const lab::RunResult run = UpdateFrom(device, "8000");
    ExpectSuccess(run);
    EXPECT_THAT(PrintLog(run.log), ElementsAre(Error(225, "New config is existed, so stop migrating.")));
    ExpectUntouched(run);
  }
}

TEST(SkipRule, DocumentThatCannotBeTestedFailsTheRun) {
  const std::pair<std::string, Edits> cases[] = {{kGlobal, {Loop(kGlobal), File(kMisc, "{}")}},
                                                 {kMisc, {Loop(kMisc)}}};
  for (const auto& [path, edits] : cases) {
    lab::PrivateRoot device = Edited(kDevice, edits);
    const lab::RunResult run = UpdateFrom(device, "8000");
    EXPECT_THAT(ExpectFailure(run, "8000"), AllOf(StartsWith("filesystem error"), HasSubstr(path)));
    EXPECT_EQ(run.log.size(), 1U);
    ExpectUntouched(run);
  }
}

// A link to nothing is no document; the document that is written takes its place.
TEST(SkipRule, OtherDocumentsAndDanglingLinksDoNotCount) {
  Edits edits{Link(kGlobal, "/tmp/nothing"), Link(kMisc, "nothing-either")};
  for (const char* name :
       {"radio.json", "wps.json", "network.json.default", "global.json.new", "misc.json.new"}) {
    edits.push_back(File(kWifi + name, "left by an interrupted run"));
  }
  lab::PrivateRoot device = Edited(kDevice, edits);

  const lab::RunResult run = UpdateFrom(device, "8000");

  ExpectSuccess(run);
  EXPECT_THAT(PrintLog(run.log), ElementsAre(Warning(229, "Start to migrate config from 1.2.5 to 1.3")));
  for (const std::string& path : {kGlobal, kMisc}) {
    EXPECT_EQ(run.after.at(path).kind, lab::Entry::Kind::File);
    EXPECT_FALSE(device.Exists(path + ".new"));
  }
  EXPECT_FALSE(device.Exists("/tmp/nothing"));
  EXPECT_FALSE(device.Exists(kWifi + "nothing-either"));
}

TEST(SkipRule, HoldsOnlyForTheOlderGeneration) {
  lab::PrivateRoot device = Edited("release-13-mesh", {File(kGlobal, "{}")});
  ExpectSuccess(UpdateFrom(device, "9000"));
  EXPECT_NE(device.Read(kGlobal), "{}");
}

}  // namespace
}  // namespace end_to_end
