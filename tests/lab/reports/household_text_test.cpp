#include "lab/reports/household_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "lab/images/private_root.h"
#include "tests/lab/household/household.h"

namespace lab_test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string View(const lab::RunResult& run, lab::Discretion::Choice choice = {}, bool colour = false) {
  lab::Discretion discretion(choice, run.before);
  discretion.Learn(run.after);
  std::ostringstream out;
  lab::PrintHousehold(out, lab::Tell("a device", "8000", run, discretion), colour);
  return out.str();
}

TEST(PrintHousehold, TellsWhatWasAndWhatIsNow) {
  Household household;
  household.Set(Household::k5, "security", "PERSONAL_WPA2_WPA3_MIXED");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("a device from build 8000: migrated, exit status 0\n"));
  EXPECT_THAT(view, HasSubstr("Primary Network: smart connect off, MAC filter deny -> profile 0, "
                              "Primary Network - Deny (1 devices)\n"));
  EXPECT_THAT(view, HasSubstr("  2.4 GHz      on  \"Home\"; PERSONAL_WPA2 -> security 4, WPA2; PMF capable; "
                              "password ********\n"));
  EXPECT_THAT(view,
              HasSubstr("  5 GHz        on  \"Home\"; PERSONAL_WPA2_WPA3_MIXED -> security 7, WPA2/WPA3; "));
  EXPECT_THAT(view,
              HasSubstr("  2.4 GHz      auto -> channel 0, automatic; 20_40MHZ -> bandwidth 2, 20/40 MHz; "
                        "bgn -> mode 1, bgn; high -> power 2, high; DFS no -> no; USB 3 on\n"));
  EXPECT_THAT(view, HasSubstr("password ********; kept out\n"));
  EXPECT_THAT(view, HasSubstr("  WPS          off; by PIN allowed, PIN ********\n"));
  EXPECT_THAT(view, HasSubstr("Findings: none\n"));
  EXPECT_THAT(view, HasSubstr("  229 Start to migrate config from 1.2.5 to 1.3\n"));
  EXPECT_THAT(view, HasSubstr("  moved to /usr/kelp/etc/wifi/legacy/: /etc/hostapd/mac_filter/ mf.info, "));
  EXPECT_THAT(view, Not(HasSubstr(" !")));
}

TEST(PrintHousehold, MarksEveryFallback) {
  Household household;
  household.Set(Household::k24, "security", "WPA2");
  household.Set(Household::k24, "max_num_client", "200 stations");
  household.Set(Household::k24, "guest_pwd_rotate_strength", "HIGH");
  household.Set(Household::k5, "tx_power", "full");
  household.Set(Household::kInformation, "country_code", "EU");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr(": migrated-with-fallbacks, "));
  EXPECT_THAT(view, HasSubstr("; WPA2 -> security 4, WPA2 !; "));
  EXPECT_THAT(view, HasSubstr("! max_num_client 200 stations -> 200\n"));
  EXPECT_THAT(view, HasSubstr("! guest_pwd_rotate_strength HIGH -> 1, medium\n"));
  EXPECT_THAT(view, HasSubstr("; full -> power 2, high !; "));
  EXPECT_THAT(view, HasSubstr("Regulatory country: US (was EU) !"));
  EXPECT_THAT(
      view,
      HasSubstr(
          "breaks  security-unknown: A security setting was not recognised, so the network uses WPA2. "));
  EXPECT_THAT(view, HasSubstr("          wifi_ap_02:11:32:00:00:04: security=WPA2\n"));
  EXPECT_THAT(view, HasSubstr("  760 Invalid security mode: WPA2, select wpa2.  The network uses WPA2: "));
}

TEST(PrintHousehold, MarksFallbacksThatTheProgramDoesNotLog) {
  Household household;
  household.Set(Household::k24, "ssid", "SG8AbWU=");  // "Ho", NUL, "me"
  household.Set(Household::k24, "guest_pwd_rotate_hour", "7pm");
  household.Set(Household::k24, "ap_enable_wps", "yes");
  household.Set(Household::k5, "allow_dfs_channels", "Yes");
  household.Drop(Household::kWPS, "wps_ap_pin");
  household.Set(Household::kInformation, "mesh_swap_backhaul_band", "YES");
  household.Set(Household::kInformation, "mesh_network_role", "RE");
  household.Set(Household::kBroadcast, "broadcast_threshold", "50x");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("on  SG8AbWU= -> \"Ho\" !; "));
  EXPECT_THAT(view, HasSubstr("! guest_pwd_rotate_date 2023/7/4 7pm:5 -> \"2023-07-04 07:05\"\n"));
  EXPECT_THAT(view, HasSubstr("DFS Yes -> no !; "));
  EXPECT_THAT(view, HasSubstr("PIN ******** !\n"));
  EXPECT_THAT(view, HasSubstr("(was YES) !"));
  EXPECT_THAT(view, HasSubstr("(was RE) !"));
  EXPECT_THAT(view, HasSubstr("50 (was 50x) !"));
}

TEST(PrintHousehold, TellsTheWordThatFellBack) {
  Household household;
  household.Set(Household::k24, "enabled", "Yes");
  household.Set(Household::k24, "pmf_mode", "Required");
  household.Set(Household::k24, "guest_allow_access_guest", "NO");
  household.Set(Household::k5, "ssid", "Home");
  household.Set(Household::kAllBands, "smartconnect_guest_enabled", "on");
  household.Set(Household::kWPS, "is_wps_ap_pin_enabled", "YES");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("  2.4 GHz      Yes -> off !  \"Home\"; "));
  EXPECT_THAT(view, HasSubstr("; PMF Required -> disabled !; "));
  EXPECT_THAT(view, HasSubstr("; NO -> let in !\n"));
  EXPECT_THAT(view, HasSubstr("Guest Network: smart connect on -> off !, "));
  EXPECT_THAT(view, HasSubstr("by PIN YES -> not allowed !, "));
}

TEST(PrintHousehold, MarksAPasswordThatIsMissingWhereOneIsNeeded) {
  Household household;
  household.Drop(Household::k24, "password");
  household.Set(Household::k5, "security", "disabled");
  household.Drop(Household::k5, "password");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("WPA2; PMF capable; password none !\n"));
  EXPECT_THAT(view, HasSubstr("open; PMF capable; password none\n"));
}

TEST(PrintHousehold, MarksNothingThatDidNotFallBack) {
  Household household;
  household.Set(Household::k24, "guest_enabled", "No");
  household.Set(Household::k24, "max_num_client", " 064 ");
  household.Set(Household::k5, "channel", "AUTO");
  household.Set(Household::k5, "guest_allow_access_guest", "YES");
  household.Set(Household::k5, "guest_pwd_rotate_date", "2023/07/04 ");
  household.Set(Household::k5, "password", household.Sealed(""));
  household.Set(Household::kPolicy, "policy", "Disabled");
  household.Set(Household::kWPS, "wps_ap_pin", "");
  EXPECT_THAT(View(household.Update()), Not(HasSubstr("!")));
}

TEST(PrintHousehold, MarksNothingOfAnEarlierRun) {
  Household household;
  household.Update();
  household.Files().Remove(Household::kMesh);
  EXPECT_THAT(View(household.Update()), Not(HasSubstr("!")));
}

TEST(PrintHousehold, MarksAWordThatEndsAtANul) {
  Household household;
  household.Set(Household::k24, "security", std::string("PERSONAL_WPA2\0x", 15));
  EXPECT_THAT(View(household.Update()), HasSubstr("PERSONAL_WPA2\\x00x -> security 4, WPA2 !; "));
}

TEST(PrintHousehold, MarksTheSwitchOfTheFileThatDecides) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.Set(Household::k24, "allow_dfs_channels", "Yes");
  EXPECT_THAT(View(household.Update()), HasSubstr("DFS Yes -> no; USB 3 on\n"));
  Household other;
  other.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  other.Set(Household::kAllBands, "allow_dfs_channels", "Yes");
  EXPECT_THAT(View(other.Update()), HasSubstr("DFS no -> no !; USB 3 on\n"));
}

TEST(PrintHousehold, MarksWhatSmartConnectDecides) {
  Household household;
  household.Set(Household::kAllBands, "smartconnect_enabled", "yes");
  household.Set(Household::k24, "tx_power", "low");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("low -> power 2, high *"));
  EXPECT_THAT(view, HasSubstr("  * smart connect: the all-bands file decides\n"));
}

TEST(PrintHousehold, LeavesAPrimaryNetworksScheduleAlone) {
  Household household;
  household.SetEverywhere("pwd_rotate_strength", "HIGH");
  EXPECT_THAT(View(household.Update()), Not(HasSubstr("!")));
}

TEST(PrintHousehold, ShowsSecretsToThoseWhoAskOnly) {
  Household household;
  household.Set(Household::k24, "password", "swordfish");
  const lab::RunResult run = household.Update();
  const std::string view = View(run);
  for (const char* secret : {"home secret", "guest secret", "swordfish", "87654325"}) {
    EXPECT_THAT(view, Not(HasSubstr(secret)));
  }
  EXPECT_THAT(view, HasSubstr("  589 Failed to decrypt ssid with ********  "));
  const std::string open = View(run, {.show_secrets = true});
  for (const char* secret : {"home secret", "guest secret", "swordfish", "87654325"}) {
    EXPECT_THAT(open, HasSubstr(secret));
  }
}

TEST(PrintHousehold, MasksWhatTheProgramSaysToo) {
  Household household;
  lab::RunResult run = household.Update();
  run.status = 1;
  run.err = "cannot use home secret, 87654325\n";
  EXPECT_THAT(View(run), HasSubstr("  cannot use ********, ********\n"));
}

TEST(PrintHousehold, ShowsHostileNamesSafely) {
  Household household;
  household.Set(Household::k24, "ssid", "G1sySibigK4iXA==");  // ESC [2J & U+202E " backslash
  household.Set(Household::k5, "ssid", "Y2Fm6Q==");           // Latin-1
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("\"\\x1b[2J&\\u202e\\\"\\\\\""));
  EXPECT_THAT(view, HasSubstr("\"caf\\xe9\""));
  EXPECT_EQ(view.find('\x1b'), std::string::npos);
}

TEST(PrintHousehold, ShowsBlanksAtTheEndOfAWord) {
  Household household;
  household.Set(Household::k24, "security", "PERSONAL_WPA3 ");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr("; PERSONAL_WPA3\\x20 -> security 4, WPA2 !; "));
  EXPECT_THAT(view, HasSubstr("          wifi_ap_02:11:32:00:00:04: security=PERSONAL_WPA3\\x20\n"));
}

TEST(PrintHousehold, ShowsTheBeginningOfAVeryLongText) {
  Household household;
  household.Set(Household::k24, "security", std::string(100'000, 'x'));
  household.Set(Household::k5, "bandwidth", "x\xC3\xA4" + std::string(100'000, 'y'));
  const std::string view = View(household.Update());
  EXPECT_LT(view.size(), 10'000U);
  EXPECT_THAT(view,
              HasSubstr(std::string(400, 'x') + "... (99600 bytes more; --json has all) -> security 4"));
}

TEST(PrintHousehold, HasColoursWhereTheyAreWanted) {
  Household household;
  const lab::RunResult run = household.Update();
  EXPECT_EQ(View(run).find('\x1b'), std::string::npos);
  EXPECT_NE(View(run, {}, true).find("\x1b[32mmigrated\x1b[0m"), std::string::npos);
}

TEST(PrintHousehold, TellsARunThatBrokeOff) {
  Household household;
  household.Drop(Household::kInformation, "wps_pin");
  const std::string view = View(household.Update());
  EXPECT_THAT(view, HasSubstr(": failed, exit status 1\n  Failed to update config, error: no key wps_pin"));
  EXPECT_THAT(view, HasSubstr("breaks  migration-stopped: "));
  EXPECT_THAT(view, HasSubstr("  written: /usr/kelp/etc/wifi/ global.json\n"));
}

TEST(PrintHousehold, ShowsDocumentsOfAnyKind) {
  Household household;
  household.Update();
  for (const char* document :
       {"[{\"featureSettings\": [1, {\"ssid\": {}, \"password\": []}]}, 2]", "{}", "[[]]"}) {
    for (const char* name : {"network.json.default", "radio.json", "misc.json", "wps.json", "global.json"}) {
      household.Files().Write(std::string("/usr/kelp/etc/wifi/") + name, document);
    }
    EXPECT_THAT(View(household.Update()), HasSubstr(": skipped, exit status 0\n"));
  }
}

TEST(PrintHousehold, TakesOneScreenForEachSampleDevice) {
  for (const char* name : {"dual-band-standalone", "tri-band-mesh-router", "tri-band-repeater",
                           "dual-band-bridge", "failing-archive", "release-13-mesh"}) {
    lab::PrivateRoot device(std::filesystem::path(KELP_SOURCE "/devices") / name);
    const std::string from = std::string_view(name) == "release-13-mesh" ? "9000" : "8000";
    const std::string view = View(lab::RunProgram(device, KELP_PROGRAM, {"--update-config", from}));
    EXPECT_LE(std::ranges::count(view, '\n'), 60) << name;
  }
}

}  // namespace
}  // namespace lab_test
