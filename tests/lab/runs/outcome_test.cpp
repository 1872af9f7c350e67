#include "lab/runs/outcome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>

namespace lab {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kNoStore =
    "Failed to update config, error: cannot read /usr/kelp/etc/info.conf: No such file or directory\n";
constexpr const char* kNoBssid =
    "Failed to update config, error: Failed to get bssid from kelp_mac_address\n";

LogLine Line(int severity, std::string message) {
  return {severity, LOG_USER, "kelpwifiupdater", std::move(message)};
}

/// A run that ended with `status`.
RunResult Ended(int status, std::vector<LogLine> log = {}, std::string err = "") {
  RunResult result;
  result.status = status;
  result.log = std::move(log);
  result.err = std::move(err);
  return result;
}

Entry File(std::string content) {
  return {Entry::Kind::File, 0644, std::move(content)};
}

const LogLine kStart = Line(LOG_WARNING, "kelpwifiupdater:229 Start to migrate config from 1.2.5 to 1.3");

TEST(Outcomes, HaveNames) {
  std::vector<std::string_view> names;
  for (const Outcome outcome : AllOutcomes()) {
    names.push_back(OutcomeName(outcome));
    EXPECT_EQ(OutcomeNamed(names.back()), outcome);
  }
  EXPECT_THAT(names, ElementsAre("migrated", "migrated-with-fallbacks", "skipped", "nothing-to-do", "failed",
                                 "crashed", "timed-out", "incomplete-image", "unusable-image"));
  EXPECT_EQ(OutcomeNamed("Migrated"), std::nullopt);
  EXPECT_EQ(OutcomeNamed(""), std::nullopt);
}

TEST(NumberedLines, AreTakenApart) {
  EXPECT_EQ(ParseNumberedLine(Line(LOG_ERR, "kelpwifiupdater:760 Invalid security mode: , select wpa2.")),
            (NumberedLine{760, LOG_ERR, "Invalid security mode: , select wpa2."}));
  EXPECT_EQ(ParseNumberedLine(Line(LOG_ERR, "kelp-next:9 a:7 b")), (NumberedLine{9, LOG_ERR, "a:7 b"}));
  EXPECT_EQ(ParseNumberedLine(Line(LOG_ERR, "name:5 ")), (NumberedLine{5, LOG_ERR, ""}));
}

TEST(NumberedLines, OfAnotherFormKeepTheirText) {
  for (const char* message : {"", "plain", "plain text: 7 x", "name:5", "name:5x y", "name: y", ":5 y",
                              "name:-5 y", "name:99999999999 y", "two words:5 y"}) {
    EXPECT_EQ(ParseNumberedLine(Line(LOG_INFO, message)), (NumberedLine{0, LOG_INFO, message}));
  }
}

TEST(Judge, TellsSuccessesApartByTheirLog) {
  EXPECT_EQ(Judge(Ended(0)).outcome, Outcome::Migrated);
  EXPECT_EQ(Judge(Ended(0, {kStart})).outcome, Outcome::Migrated);
  EXPECT_EQ(Judge(Ended(0, {kStart, Line(LOG_ERR, "kelpwifiupdater:811 Invalid tx power: , select high.")}))
                .outcome,
            Outcome::MigratedWithFallbacks);
  EXPECT_EQ(Judge(Ended(0, {Line(LOG_ERR, "kelpwifiupdater:225 New config is existed, so stop migrating.")}))
                .outcome,
            Outcome::Skipped);
  EXPECT_EQ(Judge(Ended(0, {Line(LOG_WARNING, "kelpwifiupdater:120 update nothing from 9225.")})).outcome,
            Outcome::NothingToDo);
}

TEST(Judge, GivesWhatTheRunDidBeforeWhatItMerelyComplainedAbout) {
  const LogLine no_role = Line(LOG_ERR, "kelpwifiupdater:140 Failed to get mesh role, error: x");
  EXPECT_EQ(
      Judge(Ended(0, {no_role, Line(LOG_WARNING, "kelpwifiupdater:120 update nothing from 9999.")})).outcome,
      Outcome::NothingToDo);
  EXPECT_EQ(Judge(Ended(0, {no_role, Line(LOG_ERR, "kelpwifiupdater:225 New config is existed.")})).outcome,
            Outcome::Skipped);
}

TEST(Judge, TellsHowARunFailed) {
  RunResult crashed;
  crashed.signal = 11;
  EXPECT_EQ(Judge(crashed).outcome, Outcome::Crashed);
  RunResult hung;
  hung.signal = 9;  // by which it was ended
  hung.timed_out = true;
  EXPECT_EQ(Judge(hung).outcome, Outcome::TimedOut);

  const Verdict failed = Judge(
      Ended(1, {kStart, Line(LOG_ERR, "kelpwifiupdater:954 x")}, "Failed to update config, error: stoi\n"));
  EXPECT_EQ(failed.outcome, Outcome::Failed);
  EXPECT_EQ(failed.error, "Failed to update config, error: stoi");
  EXPECT_THAT(failed.log, ElementsAre(NumberedLine{229, LOG_WARNING, kStart.message.substr(20)},
                                      NumberedLine{954, LOG_ERR, "x"}));
  EXPECT_EQ(Judge(Ended(3)).outcome, Outcome::Failed);
}

TEST(Judge, CallsAnImageIncompleteOnlyWhereTheRunFailedForIt) {
  RunResult no_store = Ended(1, {}, kNoStore);
  Verdict verdict = Judge(no_store);
  EXPECT_EQ(verdict.outcome, Outcome::IncompleteImage);
  EXPECT_THAT(verdict.error, StartsWith("the image has no information store (/usr/kelp/etc/info.conf): "
                                        "Failed to update config, error: cannot read"));
  no_store.before["/usr/kelp/etc/info.conf"] = File("");
  EXPECT_EQ(Judge(no_store).outcome, Outcome::Failed);
  EXPECT_EQ(Judge(Ended(1, {}, "Failed to update config, error: stoi\n")).outcome, Outcome::Failed);
  EXPECT_EQ(Judge(Ended(0, {}, kNoStore)).outcome, Outcome::Migrated);
}

TEST(Judge, NamesTheKernelEntriesThatAreLacking) {
  RunResult result = Ended(1, {}, kNoBssid);
  result.before["/usr/kelp/etc/info.conf"] = File("serial=1\nkelpbios=maple\n");
  EXPECT_THAT(Judge(result).error,
              StartsWith("the image has no kernel entries for its radios "
                         "(/proc/sys/kernel/kelp_mac_address3, 4, 5): Failed to update config"));
  for (const char* number : {"3", "4"}) {
    result.before[std::string("/proc/sys/kernel/kelp_mac_address") + number] = File("001122334455\n");
  }
  EXPECT_EQ(Judge(result).outcome, Outcome::IncompleteImage);
  EXPECT_THAT(Judge(result).error, HasSubstr("kelp_mac_address5)"));
  result.before["/proc/sys/kernel/kelp_mac_address5"] = {Entry::Kind::Directory, 0755, ""};
  EXPECT_EQ(Judge(result).outcome, Outcome::Failed) << "there, but no file";
}

TEST(Judge, KnowsTheModelThatNeedsFewerKernelEntries) {
  for (const char* store : {"kelpbios=orchid\n", "serial=1\nkelpbios=\"orchid\"\nx=y\n", "kelpbios=orchid"}) {
    RunResult result = Ended(1, {}, kNoBssid);
    result.before["/usr/kelp/etc/info.conf"] = File(store);
    EXPECT_THAT(Judge(result).error, HasSubstr("kelp_mac_address4, 5)"));
    result.before["/proc/sys/kernel/kelp_mac_address4"] = {Entry::Kind::Directory, 0755, ""};
    result.before["/proc/sys/kernel/kelp_mac_address5"] = File("001122334455\n");
    EXPECT_EQ(Judge(result).outcome, Outcome::Failed) << "entry 3 is not for it";
  }
}

}  // namespace
}  // namespace lab
