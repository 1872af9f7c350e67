#include "tests/lab/household/found.h"

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
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutNetworks, TellANetworkWithoutAnyName) {
  Household household;
  household.Set(Household::k24, "ssid", "");
  household.Drop(Household::k5, "guest_ssid");
  EXPECT_THAT(Found(household),
              ElementsAre("ssid-lost: wifi_ap_02:11:32:00:00:04: ssid is empty or missing",
                          "ssid-lost: wifi_ap_02:11:32:00:00:05: guest_ssid is empty or missing"));
}

TEST(FindingsAboutNetworks, NeedNoNameOfANetworkThatIsOffOrHasItFromElsewhere) {
  Household household;
  household.Set(Household::kAllBands, "ssid", "");  // without smart connect each radio has its own
  household.Set(Household::k24, "ssid", "");
  household.Set(Household::k24, "enabled", "no");
  EXPECT_THAT(Found(household), IsEmpty());
  Household smart;
  smart.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  smart.Set(Household::k5, "ssid", "");
  EXPECT_THAT(Found(smart), IsEmpty());
  Household nameless;
  nameless.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  nameless.Set(Household::kAllBands, "ssid", "");
  EXPECT_THAT(Found(nameless), ElementsAre("ssid-lost: wifi_ap_00:00:00:00:00:00: ssid is empty or missing"));
}

TEST(FindingsAboutNetworks, TellOfANetworkThatIsOffThatItIs) {
  Household household;
  household.Set(Household::k24, "guest_enabled", "no\r");
  household.Set(Household::k24, "guest_ssid", "Guests");
  EXPECT_THAT(Found(household),
              ElementsAre("crlf-lines: wifi_ap_02:11:32:00:00:04",
                          "ssid-lost: the network is off: wifi_ap_02:11:32:00:00:04: guest_ssid=Guests"));
}

TEST(FindingsAboutNetworks, TellANetworkThatIsOffForItsSpelling) {
  Household household;
  household.Set(Household::k5, "enabled", "Yes");
  EXPECT_THAT(Found(household), ElementsAre("network-switched-off: wifi_ap_02:11:32:00:00:05: enabled=Yes"));
}

TEST(FindingsAboutNetworks, LeaveANetworkAloneThatWasOff) {
  Household household;
  household.Set(Household::k5, "enabled", "No");
  household.Set(Household::k5, "guest_enabled", "off");
  household.Drop(Household::k24, "guest_enabled");
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
