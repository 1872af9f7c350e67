#include "lab/sweeps/documents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lab::sweeps {
namespace {

using ::testing::HasSubstr;
using ::testing::Optional;

const std::string kFolder = "/usr/kelp/etc/wifi/";

Entry File(std::string content, mode_t mode = 0600) {
  return {Entry::Kind::File, mode, std::move(content)};
}

class FindBreachTest : public ::testing::Test {
 protected:
  std::optional<std::string> Breach(bool may_leave_temporary = false) const {
    return FindBreach(before_, after_, {&written_}, may_leave_temporary);
  }

  Tree before_{{"/etc/hostapd/mac_filter/mf.info", File("policy=deny")},
               {kFolder + "country.json", File("{}")},
               {kFolder + "radio.json", File("[ 1 ]")}};
  Tree written_{{kFolder + "global.json", File("{ 2 }")}, {kFolder + "radio.json", File("[ 2 ]")}};
  Tree after_ = before_;
};

TEST_F(FindBreachTest, FindsNoneWhereNothingHappened) {
  EXPECT_EQ(Breach(), std::nullopt);
}

TEST_F(FindBreachTest, AllowsNewDocumentsAndTheArchive) {
  after_ = written_;
  after_[kFolder + "country.json"] = File("{}");
  after_[kFolder + "legacy"] = {Entry::Kind::Directory, 0755, ""};
  after_[kFolder + "legacy/mf.info"] = File("policy=deny");
  EXPECT_EQ(Breach(), std::nullopt);
}

TEST_F(FindBreachTest, SeesADocumentThatIsNotWhole) {
  after_[kFolder + "radio.json"] = File("[");
  EXPECT_THAT(Breach(), Optional(HasSubstr("radio.json")));
}

TEST_F(FindBreachTest, SeesADocumentThatNobodyGave) {
  after_[kFolder + "wps.json"] = File("{}");
  EXPECT_THAT(Breach(), Optional(HasSubstr("wps.json")));
}

TEST_F(FindBreachTest, SeesADocumentThatOthersMayRead) {
  after_[kFolder + "global.json"] = File("{ 2 }", 0644);
  EXPECT_THAT(Breach(), Optional(HasSubstr("global.json")));
}

TEST_F(FindBreachTest, SeesAnOldDocumentThatIsGone) {
  after_.erase(kFolder + "radio.json");
  EXPECT_THAT(Breach(), Optional(HasSubstr("radio.json")));
}

TEST_F(FindBreachTest, SeesALostLegacyFile) {
  after_.erase("/etc/hostapd/mac_filter/mf.info");
  EXPECT_THAT(Breach(), Optional(HasSubstr("gone from its place and from the archive")));
}

TEST_F(FindBreachTest, SeesAChangedLegacyFile) {
  after_["/etc/hostapd/mac_filter/mf.info"] = File("policy=");
  EXPECT_THAT(Breach(), Optional(HasSubstr("changed")));
}

TEST_F(FindBreachTest, SeesAnOldFileOf13ThatGoesBeforeItsDocumentStands) {
  after_.erase(kFolder + "country.json");
  EXPECT_THAT(Breach(), Optional(HasSubstr("gone before global.json stands")));
  after_[kFolder + "global.json"] = File("{ 2 }");
  EXPECT_EQ(Breach(), std::nullopt);
}

TEST_F(FindBreachTest, SeesWhatLiesBesideTheDocuments) {
  after_[kFolder + "misc.json.new"] = File("");
  EXPECT_THAT(Breach(), Optional(HasSubstr("left beside")));
  EXPECT_EQ(Breach(true), std::nullopt);
}

TEST_F(FindBreachTest, SeesABesideLyingFileThatOthersMayRead) {
  after_[kFolder + "misc.json.new"] = File("", 0640);
  EXPECT_THAT(Breach(true), Optional(HasSubstr("others may read")));
}

TEST_F(FindBreachTest, AllowsALeftoverThatTheRunDidNotComeTo) {
  before_[kFolder + "radio.json.new"] = File("torn");
  after_[kFolder + "radio.json.new"] = File("torn");
  EXPECT_EQ(Breach(), std::nullopt);
  after_[kFolder + "radio.json.new"] = File("torn more");
  EXPECT_THAT(Breach(), Optional(HasSubstr("left beside")));
}

TEST_F(FindBreachTest, TakesNoOldDocumentForANewOneThoughTheRulesMayLeaveIt) {
  written_[kFolder + "radio.json"] = File("[ 1 ]");
  before_[kFolder + "radio.json.new"] = File("torn");
  after_[kFolder + "radio.json.new"] = File("torn");
  EXPECT_EQ(Breach(), std::nullopt);
}

TEST_F(FindBreachTest, SeesALeftoverBesideTheNewDocument) {
  before_[kFolder + "radio.json.new"] = File("torn");
  after_[kFolder + "radio.json.new"] = File("torn");
  after_[kFolder + "radio.json"] = File("[ 2 ]");
  EXPECT_THAT(Breach(), Optional(HasSubstr("left beside")));
  EXPECT_EQ(Breach(true), std::nullopt);
}

TEST_F(FindBreachTest, SeesAnyOtherNewFile) {
  after_["/var/core"] = File("");
  EXPECT_THAT(Breach(), Optional(HasSubstr("/var/core")));
}

TEST_F(FindBreachTest, LeavesTheLockOfTheBootEnvironmentAlone) {
  after_["/var/lock/fw_printenv.lock"] = File("");
  EXPECT_EQ(Breach(), std::nullopt);
}

}  // namespace
}  // namespace lab::sweeps
