#include "lab/household/findings.h"

#include <algorithm>
#include <set>

#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::IsEmpty;

TEST(DetectFindings, FindsNothingInAnOrdinaryHousehold) {
  Household household;
  const lab::RunResult run = household.Update();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.log.size(), 1U);
  EXPECT_THAT(lab::DetectFindings(run), IsEmpty());
}

TEST(DetectFindings, FindsNothingWhereNothingIsToDo) {
  Household household;
  EXPECT_THAT(Found(household, "9225"), IsEmpty());
}

TEST(DetectFindings, FindsNothingInARepeatedRun) {
  Household household;
  household.Update();
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingKinds, HaveIdsOfTheirOwnAndWordsForAllThatIsAsked) {
  std::set<std::string_view> ids;
  for (const lab::FindingKind& kind : lab::FindingKinds()) {
    EXPECT_TRUE(ids.insert(kind.id).second) << kind.id;
    EXPECT_NE(kind.title, "") << kind.id;
    EXPECT_TRUE(kind.meaning.ends_with('.')) << kind.id;
    EXPECT_TRUE(kind.remedy.ends_with('.')) << kind.id;
    EXPECT_EQ(lab::FindFindingKind(kind.id), &kind);
  }
  EXPECT_EQ(lab::FindFindingKind("no-such-finding"), nullptr);
}

TEST(FindingKinds, StandInTheOrderOfTheirSeverity) {
  EXPECT_TRUE(std::ranges::is_sorted(lab::FindingKinds(), {}, &lab::FindingKind::severity));
}

TEST(SeverityOfFindings, HasNames) {
  EXPECT_EQ(lab::SeverityName(lab::Severity::Breaks), "breaks");
  EXPECT_EQ(lab::SeverityName(lab::Severity::Weakens), "weakens");
  EXPECT_EQ(lab::SeverityName(lab::Severity::Changes), "changes");
}

}  // namespace
}  // namespace lab_test
