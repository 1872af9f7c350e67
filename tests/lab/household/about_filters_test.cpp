#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kTwo = "[two]\nenable=yes\nmac=02:aa:00:00:00:0\n";

TEST(FindingsAboutFilters, NameTheSectionWhoseAddressEmptiesAllLists) {
  Household household;
  household.Files().Write(Household::kAllowList, household.Files().Read(Household::kAllowList) + kTwo);
  const std::string why = "mf_allow.conf: [two] mac=02:aa:00:00:00:0 is no address and empties all lists";
  EXPECT_THAT(Found(household), ElementsAre("filter-off: mf.info: policy=deny, but " + why,
                                            "filter-off: mf_guest.info: policy=allow, but " + why));
}

TEST(FindingsAboutFilters, LeaveAMalformedAddressAloneThatIsSwitchedOff) {
  Household household;
  household.Files().Write(Household::kAllowList,
                          household.Files().Read(Household::kAllowList) + "[two]\nenable=no\nmac=none\n");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutFilters, LeaveAMalformedAddressAloneWhereNobodyWantsAFilter) {
  Household household;
  household.Files().Write(Household::kDenyList, kTwo);
  household.Set(Household::kPolicy, "policy", "disabled");
  household.Drop(Household::kGuestPolicy, "policy");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutFilters, TellAListThatIsMissingOrHasNobodyOnIt) {
  Household household;
  household.Files().Remove(Household::kDenyList);
  household.Files().Write(Household::kAllowList, "[one]\nenable=no\nmac=02:aa:00:00:00:02\n");
  EXPECT_THAT(Found(household),
              ElementsAre("filter-off: mf.info: policy=deny, but mf_deny.conf is missing",
                          "filter-off: mf_guest.info: policy=allow, but mf_allow.conf has no enabled entry"));
}

TEST(FindingsAboutFilters, TellOfANetworkThatIsOffThatItIs) {
  Household household;
  household.SetEverywhere("guest_enabled", "no");
  household.SetEverywhere("enabled", "no");
  household.Set(Household::k5, "enabled", "yes");
  household.Set(Household::kPolicy, "policy", "Deny");
  household.Set(Household::kGuestPolicy, "policy", "Allow");
  EXPECT_THAT(Found(household),
              ElementsAre("filter-policy-unknown: mf.info: policy=Deny",
                          "filter-policy-unknown: the network is off: mf_guest.info: policy=Allow"));
}

TEST(FindingsAboutFilters, TellAPolicyThatIsNotKnown) {
  Household household;
  household.Set(Household::kPolicy, "policy", "Deny");
  EXPECT_THAT(Found(household), ElementsAre("filter-policy-unknown: mf.info: policy=Deny"));
}

TEST(FindingsAboutFilters, LeaveAPolicyAloneThatSaysOff) {
  for (const char* word : {"Disabled", "disabled ", "off", "none"}) {
    Household household;
    household.Set(Household::kPolicy, "policy", word);
    EXPECT_THAT(Found(household), IsEmpty()) << word;
  }
}

TEST(FindingsAboutFilters, TellAListThatCannotBeRead) {
  Household household;
  household.Files().Remove(Household::kDenyList);
  household.Files().Write(std::string(Household::kDenyList) + "/file", "");
  EXPECT_THAT(Found(household),
              ElementsAre("filter-off: mf.info: policy=deny, but mf_deny.conf cannot be read"));
}

TEST(FindingsAboutFilters, TellABroadcastThresholdThatIsNotReadWhole) {
  Household household;
  household.Set(Household::kBroadcast, "broadcast_threshold", "50 a second");
  EXPECT_THAT(Found(household),
              ElementsAre("number-unreadable: mf.setting: broadcast_threshold=50 a second is now 50"));
  Household off;
  off.Set(Household::kBroadcast, "broadcast_threshold", "50 a second");
  off.Set(Household::kBroadcast, "broadcast_detect_enabled", "NO");
  EXPECT_THAT(Found(off), IsEmpty());
}

TEST(FindingsAboutFilters, TellAnEntryThatIsLeftOutForItsSpelling) {
  Household household;
  household.Files().Write(Household::kDenyList, household.Files().Read(Household::kDenyList) +
                                                    "[two]\nenable=Yes\nmac=02:aa:00:00:00:03\n");
  EXPECT_THAT(Found(household), ElementsAre("filter-entry-left-out: mf_deny.conf: [two] enable=Yes"));
}

TEST(FindingsAboutFilters, LeaveEntriesAloneThatWereSwitchedOffOrThatNobodyAsksFor) {
  Household household;
  household.Files().Write(Household::kDenyList, household.Files().Read(Household::kDenyList) +
                                                    "[two]\nenable=no\n[three]\nenable=\n[four]\nmac=x\n"
                                                    "[five]\nenable=NO\n");
  household.Files().Write(Household::kAllowList, "[one]\nenable=Yes\nmac=02:aa:00:00:00:02\n");
  household.Set(Household::kGuestPolicy, "policy", "disabled");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutFilters, TellBroadcastDetectionThatIsOffForItsThreshold) {
  Household household;
  household.Set(Household::kBroadcast, "broadcast_threshold", "many");
  EXPECT_THAT(Found(household),
              ElementsAre("broadcast-detection-off: mf.setting: broadcast_detect_enabled=yes, "
                          "mf.setting: broadcast_threshold=many"));
  Household other;
  other.Set(Household::kBroadcast, "broadcast_detect_enabled", "no");
  other.Drop(Household::kBroadcast, "broadcast_threshold");
  EXPECT_THAT(Found(other), IsEmpty());
}

}  // namespace
}  // namespace lab_test
