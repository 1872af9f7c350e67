#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string k24 = "wifi_ap_02:11:32:00:00:04: ";

TEST(FindingsAboutWords, TellSwitchesThatAreNeitherYesNorNo) {
  Household household;
  household.Set(Household::k24, "guest_display_ssid", "true");
  household.Set(Household::k24, "allow_dfs_channels", "Yes");
  household.Set(Household::kAllBands, "smartconnect_enabled", "on");
  household.Set(Household::kWPS, "is_wps_ap_pin_enabled", "YES");
  EXPECT_THAT(Found(household),
              ElementsAre("flag-unknown: " + k24 + "guest_display_ssid=true",
                          "flag-unknown: " + k24 + "allow_dfs_channels=Yes",
                          "flag-unknown: wifi_ap_00:00:00:00:00:00: smartconnect_enabled=on",
                          "flag-unknown: wifi_wps: is_wps_ap_pin_enabled=YES"));
}

TEST(FindingsAboutWords, LeaveSwitchesAloneThatAreOffOrThatNobodyReads) {
  Household household;
  household.Set(Household::k24, "display_ssid", "no");
  household.Set(Household::k5, "display_ssid", "NO");
  household.Set(Household::k5, "force_24g_40mhz", "Yes");
  household.Set(Household::k24, "ampdu", "");
  household.Set(Household::k24, "smartconnect_enabled", "on");
  household.Set(Household::kAllBands, "allow_dfs_channels", "Yes");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutWords, TellTheSwitchesOfTheFileThatDecides) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.Set(Household::kAllBands, "allow_dfs_channels", "Yes");
  household.Set(Household::kAllBands, "ap_enable_wps", "Yes");
  household.Set(Household::k24, "allow_dfs_channels", "on");
  household.Set(Household::k24, "ap_enable_wps", "on");
  const std::string all_bands = "flag-unknown: wifi_ap_00:00:00:00:00:00: ";
  EXPECT_THAT(Found(household),
              ElementsAre(all_bands + "allow_dfs_channels=Yes", all_bands + "ap_enable_wps=Yes"));
}

TEST(FindingsAboutWords, TellNoSwitchBehindTheOneThatDecides) {
  Household household;
  household.Set(Household::k24, "ap_enable_wps", "yes");
  household.Set(Household::k5, "ap_enable_wps", "Yes");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutWords, TellChannelsThatAreNotReadWhole) {
  Household household;
  household.Set(Household::k24, "channel", "11 or 6");
  household.Set(Household::k5, "channel2", "high");
  EXPECT_THAT(Found(household),
              ElementsAre("number-unreadable: " + k24 + "channel=11 or 6 is now 11",
                          "number-unreadable: wifi_ap_02:11:32:00:00:05: channel2=high is now 0"));
}

TEST(FindingsAboutWords, LeaveNumbersAloneInWhicheverFormTheyAreWritten) {
  Household household;
  household.Set(Household::k24, "channel", " 011 ");
  household.Set(Household::k5, "channel", "Auto");
  household.Set(Household::k5, "dtim", "+3\t");
  household.Set(Household::k5, "auth_server_Port", "none");  // nobody asks for it
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutWords, TellNumbersThatAreNotReadWhole) {
  Household household;
  household.Set(Household::k24, "max_num_client", "200 stations");
  household.Set(Household::k24, "guest_key_rotation", "off");
  EXPECT_THAT(Found(household),
              ElementsAre("number-unreadable: " + k24 + "max_num_client=200 stations is now 200",
                          "number-unreadable: " + k24 + "guest_key_rotation=off is now 3600"));
}

TEST(FindingsAboutWords, LeaveNumbersAloneThatAreMissingOrEmpty) {
  Household household;
  household.Drop(Household::k24, "max_num_client");
  household.Set(Household::k24, "dtim", "");
  household.Set(Household::k24, "key_rotation", " 7200");
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
