#include "tests/lab/household/found.h"

namespace lab_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::string WithCarriageReturns(const std::string& text) {
  std::string changed;
  for (const char byte : text) changed += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
  return changed;
}

TEST(FindingsAboutFiles, TellAMissingAccessPointFileAndNothingElseOfIt) {
  Household household;
  household.Files().Remove(Household::k5);
  EXPECT_THAT(Found(household),
              ElementsAre("access-point-file-missing: wifi_ap_02:11:32:00:00:05 is missing",
                          "archive-stopped: " + std::string(Household::k5) + " is missing"));
}

TEST(FindingsAboutFiles, TellAFileOfTheSameAddressInOtherLetters) {
  Household household;
  household.Files().Write("/proc/sys/kernel/kelp_mac_address5", "0211320000AB\n");
  household.Files().Write("/usr/kelp/etc/wifi/wifi_ap_02:11:32:00:00:ab", "enabled=yes\n");
  EXPECT_THAT(Found(household), Contains("access-point-file-missing: wifi_ap_02:11:32:00:00:AB is missing; "
                                         "there is wifi_ap_02:11:32:00:00:ab"));
}

TEST(FindingsAboutFiles, LeaveFilesOfOtherBoardsAlone) {
  Household household;
  household.Files().Write("/usr/kelp/etc/wifi/wifi_ap_02:11:32:00:00:99", "enabled=yes\r\n");
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutFiles, TellLineEndsOfAnotherSystem) {
  Household household;
  household.Files().Write(Household::k24, WithCarriageReturns(household.Files().Read(Household::k24)));
  const std::vector<std::string> found = Found(household);
  EXPECT_THAT(found, Contains("crlf-lines: wifi_ap_02:11:32:00:00:04"));
  EXPECT_THAT(found, Contains("ssid-lost: wifi_ap_02:11:32:00:00:04: ssid=SG9tZQ==\r"));
  EXPECT_THAT(found, Contains("network-switched-off: wifi_ap_02:11:32:00:00:04: enabled=yes\r"));
  EXPECT_THAT(found, Not(Contains(::testing::HasSubstr("02:11:32:00:00:05"))));
}

TEST(FindingsAboutFiles, TellLineEndsOfAnotherSystemInAFilterList) {
  Household household;
  household.Files().Write(Household::kDenyList,
                          WithCarriageReturns(household.Files().Read(Household::kDenyList)));
  EXPECT_THAT(Found(household), Contains("crlf-lines: mf_deny.conf"));
}

TEST(FindingsAboutFiles, TellAFileWithoutSettings) {
  for (const char* text : {"", "\n", "# nothing but a comment\n"}) {
    Household household;
    household.Files().Write(Household::k5, text);
    EXPECT_THAT(Found(household), ElementsAre("access-point-file-empty: wifi_ap_02:11:32:00:00:05"));
  }
}

TEST(FindingsAboutFiles, TellLineEndsOfAnOlderSystem) {
  Household household;
  household.Files().Write(Household::kWPS, "is_wps_ap_pin_enabled=yes\rwps_ap_pin=87654325\r");
  EXPECT_THAT(Found(household), Contains("crlf-lines: wifi_wps"));
}

TEST(FindingsAboutFiles, LeaveACommentAloneThatEndsOtherwise) {
  Household household;
  household.Files().Write(Household::k24, "# made elsewhere\r\n" + household.Files().Read(Household::k24));
  EXPECT_THAT(Found(household), IsEmpty());
}

TEST(FindingsAboutFiles, TellASectionWhoseNameEndsOtherwise) {
  Household household;
  household.Files().Write(Household::kDenyList,
                          household.Files().Read(Household::kDenyList) + "[two]\r\nenable=no\n");
  EXPECT_THAT(Found(household), Contains("crlf-lines: mf_deny.conf"));
}

TEST(FindingsAboutFiles, TellTheFactsWhoseLineEndsStopTheUpdate) {
  Household household;
  household.Files().Write(Household::kInformation,
                          WithCarriageReturns(household.Files().Read(Household::kInformation)));
  EXPECT_THAT(Found(household),
              ElementsAre("migration-stopped: Invalid kelpbios value: orchid\r", "crlf-lines: info.conf"));
  Household newer;
  newer.Files().Write(Household::kInformation,
                      newer.Files().Read(Household::kInformation) + "color=blue\r\n");
  EXPECT_THAT(Found(newer, "9225"), IsEmpty());
}

TEST(FindingsAboutFiles, TakeACarriageReturnInsideALineForAByte) {
  Household household;
  household.SetEverywhere("schedule", "daily\r05:00");
  EXPECT_THAT(Found(household), IsEmpty());
}

}  // namespace
}  // namespace lab_test
