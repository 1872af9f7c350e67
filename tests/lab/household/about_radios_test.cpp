#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string k24 = "wifi_ap_02:11:32:00:00:04: ";
const std::string k5 = "wifi_ap_02:11:32:00:00:05: ";

TEST(FindingsAboutRadios, TellWordsThatFellBack) {
  Household household;
  household.Set(Household::k5, "bandwidth", "40MHZ");
  household.Set(Household::k24, "mode", "ax");
  household.Drop(Household::k24, "tx_power");
  EXPECT_THAT(Found(household),
              ElementsAre("bandwidth-unknown: " + k5 + "bandwidth=40MHZ", "mode-unknown: " + k24 + "mode=ax",
                          "power-unknown: " + k24 + "tx_power is missing"));
}

TEST(FindingsAboutRadios, LeaveTheWordsOfTheAllBandsFileAloneThatNobodyReads) {
  Household household;
  household.Set(Household::kAllBands, "bandwidth", "40MHZ");
  household.Set(Household::kAllBands, "mode", "ax");
  household.Set(Household::kAllBands, "tx_power", "full");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutRadios, NeedNoBandwidthWhere40MHzAreForced) {
  Household household;
  household.Set(Household::k24, "bandwidth", "40MHZ");
  household.Set(Household::k24, "force_24g_40mhz", "yes");
  EXPECT_THAT(Found(household), IsEmpty());
  Household other;
  other.Set(Household::k5, "bandwidth", "40MHZ");
  other.Set(Household::k24, "bandwidth", "40MHZ");
  other.Set(Household::k24, "force_24g_40mhz", "yes");
  EXPECT_THAT(Found(other), ElementsAre("bandwidth-unknown: " + k5 + "bandwidth=40MHZ"));
}

TEST(FindingsAboutRadios, TellWhatSmartConnectTakesFromARadio) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.Set(Household::k24, "tx_power", "low");
  household.Set(Household::k5, "allow_dfs_channels", "yes");
  household.Set(Household::k5, "ap_enable_wps", "yes");
  EXPECT_THAT(
      Found(household),
      ElementsAre("smart-connect-decides: " + k24 + "tx_power=low, all bands tx_power=high",
                  "smart-connect-decides: " + k5 + "allow_dfs_channels=yes, all bands allow_dfs_channels=no",
                  "smart-connect-decides: " + k5 + "ap_enable_wps=yes, all bands ap_enable_wps=no"));
}

TEST(FindingsAboutRadios, TellWPSThatStaysOnForOneRadio) {
  Household household;
  household.SetEverywhere("ap_enable_wps", "yes");
  EXPECT_THAT(Found(household), ElementsAre("wps-on-one-band: " + k5 + "ap_enable_wps=yes"));
  Household one;
  one.Set(Household::k5, "ap_enable_wps", "yes");
  EXPECT_THAT(Found(one), IsEmpty());
  Household smart;
  smart.SetEverywhere("ap_enable_wps", "yes");
  smart.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  EXPECT_THAT(Found(smart), IsEmpty());
}

TEST(FindingsAboutRadios, TakeAPowerThatIsNotKnownForNoneThatWasTaken) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.Set(Household::k24, "tx_power", "full");
  household.Drop(Household::k5, "tx_power");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutRadios, TellThePowerOfTheFileThatDecides) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.SetEverywhere("tx_power", "full");
  EXPECT_THAT(Found(household), ElementsAre("power-unknown: wifi_ap_00:00:00:00:00:00: tx_power=full"));
}

TEST(FindingsAboutRadios, LeaveRadiosAloneThatDecideForThemselves) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_guest_enabled", "yes");
  household.Set(Household::k24, "smartconnect_enabled", "yes");
  household.Set(Household::k24, "tx_power", "low");
  household.Set(Household::k5, "allow_dfs_channels", "yes");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutRadios, LeaveRadiosAloneThatAgreeWithAllBands) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.Drop(Household::k24, "allow_dfs_channels");
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
