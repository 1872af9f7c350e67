#include "tests/lab/findings/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(FindingsAboutNetworks, TellANameThatIsLost) {
  Household household;
  household.Set(Household::k24, "guest_ssid", "Guests");
  EXPECT_THAT(Found(household), ElementsAre("ssid-lost: wifi_ap_02:11:32:00:00:04: guest_ssid=Guests"));
}

TEST(FindingsAboutNetworks, TellANameThatIsCutAtANul) {
  Household household;
  household.Set(Household::k24, "ssid", "SG8AbWU=");  // "Ho\0me"
  EXPECT_THAT(Found(household), ElementsAre("ssid-cut: wifi_ap_02:11:32:00:00:04: ssid"));
}

TEST(FindingsAboutNetworks, LeaveNamesOfAnyBytesAlone) {
  Household household;
  household.Set(Household::k24, "ssid", "6Q==");  // one byte, Latin-1
  household.Set(Household::k5, "ssid", "");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutNetworks, TellANetworkThatIsOffForItsSpelling) {
  Household household;
  household.Set(Household::k5, "enabled", "Yes");
  EXPECT_THAT(Found(household), ElementsAre("network-switched-off: wifi_ap_02:11:32:00:00:05: enabled=Yes"));
}

TEST(FindingsAboutNetworks, LeaveANetworkAloneThatWasOff) {
  Household household;
  household.Set(Household::k5, "enabled", "no");
  household.Drop(Household::k24, "guest_enabled");
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
