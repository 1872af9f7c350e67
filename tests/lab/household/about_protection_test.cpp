#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string k24 = "wifi_ap_02:11:32:00:00:04: ";
const std::string k5 = "wifi_ap_02:11:32:00:00:05: ";

TEST(FindingsAboutProtection, TellASecurityWordThatIsNotKnown) {
  Household household;
  household.Set(Household::k24, "security", "WPA2");
  EXPECT_THAT(Found(household), ElementsAre("security-unknown: " + k24 + "security=WPA2"));
}

TEST(FindingsAboutProtection, TellASecurityWordThatIsMissing) {
  Household household;
  household.Drop(Household::k5, "guest_security");
  EXPECT_THAT(Found(household), ElementsAre("security-unknown: " + k5 + "guest_security is missing"));
}

TEST(FindingsAboutProtection, TellAWPA3ThatIsWeakerNow) {
  Household household;
  household.Set(Household::k5, "security", "PERSONAL_WPA3 ");
  EXPECT_THAT(Found(household), ElementsAre("security-unknown: " + k5 + "security=PERSONAL_WPA3 ",
                                            "wpa3-weakened: " + k5 + "security=PERSONAL_WPA3 "));
}

TEST(FindingsAboutProtection, TellAWPA3InOtherLetters) {
  Household household;
  household.Set(Household::k5, "security", "personal_wpa3");
  household.Set(Household::k24, "security", "wpa2_wpa3");
  EXPECT_THAT(Found(household), ElementsAre("security-unknown: " + k24 + "security=wpa2_wpa3",
                                            "security-unknown: " + k5 + "security=personal_wpa3",
                                            "wpa3-weakened: " + k5 + "security=personal_wpa3"));
}

TEST(FindingsAboutProtection, LeaveWPA3AloneThatStays) {
  Household household;
  household.Set(Household::k5, "security", "PERSONAL_WPA3");
  household.Set(Household::k24, "security", "PERSONAL_WPA2_WPA3_MIXED");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutProtection, TellAWordForProtectedFramesThatIsNotKnown) {
  Household household;
  household.Set(Household::k24, "pmf_mode", "optional");
  EXPECT_THAT(Found(household), ElementsAre("pmf-unknown: " + k24 + "pmf_mode=optional"));
}

TEST(FindingsAboutProtection, LeaveProtectedFramesAloneThatWereOff) {
  Household household;
  household.SetEverywhere("pmf_mode", "disabled");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutProtection, TellGuestsWhoseOwnProtectedFramesWereStronger) {
  Household household;
  household.Set(Household::k24, "guest_pmf_mode", "required");
  EXPECT_THAT(Found(household),
              ElementsAre("guest-pmf-weaker: " + k24 + "guest_pmf_mode=required, and pmf_mode=capable"));
}

TEST(FindingsAboutProtection, LeaveGuestsAloneWhoseProtectedFramesAreNoWeaker) {
  Household household;
  household.Set(Household::k24, "guest_pmf_mode", "capable");
  household.Set(Household::k5, "guest_pmf_mode", "disabled");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutProtection, TellAWPA3NetworkWithoutProtectedFrames) {
  Household household;
  household.Set(Household::k5, "pmf_mode", "disabled");
  household.Set(Household::k5, "guest_security", "PERSONAL_WPA3");
  EXPECT_THAT(Found(household), ElementsAre("pmf-missing-for-wpa3: " + k5 + "guest_security=PERSONAL_WPA3"));
}

TEST(FindingsAboutProtection, TellAnOWENetworkWithoutProtectedFrames) {
  Household household;
  household.Set(Household::k5, "pmf_mode", "disabled");
  household.Set(Household::k5, "guest_security", "OWE");
  household.Set(Household::k24, "guest_security", "OWE");
  EXPECT_THAT(Found(household), ElementsAre("pmf-missing-for-wpa3: " + k5 + "guest_security=OWE"));
}

TEST(FindingsAboutProtection, TellAnEnterpriseNetworkWithoutItsServer) {
  Household household;
  household.Set(Household::k5, "security", "ENTERPRISE_WPA3");
  household.Set(Household::k5, "auth_server_shared_secret", household.Sealed("shared"));
  household.Set(Household::k5, "auth_server_Port", "radius");
  EXPECT_THAT(Found(household), ElementsAre("auth-server-lost: " + k5 + "auth_server_ip=",
                                            "auth-server-lost: " + k5 + "auth_server_Port=radius",
                                            "number-unreadable: " + k5 + "auth_server_Port=radius is now 0"));
}

TEST(FindingsAboutProtection, NeedNoServerOfOtherNetworks) {
  Household household;
  household.Set(Household::k5, "auth_server_Port", "0");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutProtection, TellIsolationThatIsOffForItsSpelling) {
  Household household;
  household.Set(Household::k24, "guest_ap_isolation", "1");
  EXPECT_THAT(Found(household), ElementsAre("isolation-lost: " + k24 + "guest_ap_isolation=1"));
  Household other;
  other.Set(Household::k24, "guest_ap_isolation", "no");
  other.Set(Household::k5, "guest_ap_isolation", "0");
  EXPECT_THAT(Found(other), IsEmpty());
}

}  // namespace
}  // namespace lab_test
