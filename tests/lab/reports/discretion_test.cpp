#include "lab/reports/discretion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lab/reports/household_json.h"
#include "tests/lab/households/household.h"

namespace lab_test {
namespace {

using lab::Discretion;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

lab::Tree Device() {
  const auto file = [](const std::string& text) { return lab::Entry{lab::Entry::Kind::File, 0644, text}; };
  return {{"/wifi_ap", file("ssid=SG9tZSBuZXQ=\npassword=plain word\nguest_password=\n")},
          {"/secret.key", file("0011aabb\n")},
          {"/mf_deny.conf", file("[one]\ndesc=Living room TV\nmac=02:AA:00:00:00:01\n")},
          {"/network.json.default", file("[{\"ssid\": \"Home net\", \"password\": \"opened word\"}]")}};
}

TEST(Discretion, MasksSecretsWhereverTheyStand) {
  const Discretion discretion({}, Device());
  EXPECT_EQ(discretion.Secret("x"), "********");
  EXPECT_EQ(discretion.Secret(""), "");
  EXPECT_EQ(discretion.Text("a plain word, an opened word, 0011aabb"), "a ********, an ********, ********");
  EXPECT_EQ(discretion.Text("Home net 02:aa:00:00:00:01"), "Home net 02:aa:00:00:00:01");
}

TEST(Discretion, MasksTheSecretsOfFilesByTheirKeys) {
  const Discretion discretion({}, {});
  EXPECT_EQ(discretion.FileText("/wifi_ap",
                                "password=x\nguest_auth_server_shared_secret=y\n"
                                "guest_password=\nwps_ap_pin=1\nis_wps_ap_pin_enabled=yes\nwl0_wpa_psk=z"),
            "password=********\nguest_auth_server_shared_secret=********\nguest_password=\n"
            "wps_ap_pin=********\nis_wps_ap_pin_enabled=yes\nwl0_wpa_psk=********");
  EXPECT_EQ(discretion.FileText("/usr/kelp/etc/secret.key", "0011\n"), "********\n");
  EXPECT_THAT(discretion.FileText("/wps.json", "{\"pin\": \"12345670\", \"pin_enabled\": true}"),
              MatchesRegex("\\{\n\t\"pin\" ?: \"\\*{8}\",\n\t\"pin_enabled\" ?: true\n\\}\n"));
  EXPECT_THAT(discretion.FileText("/network.json.new", "[{\"password\": \"torn"), Not(HasSubstr("torn")));
}

TEST(Discretion, MasksWhatTwoLinesOfTheLogHold) {
  const Discretion discretion({}, {});
  EXPECT_EQ(discretion.LogText({589, 3, "Failed to decrypt ssid with ab"}),
            "Failed to decrypt ssid with ********");
  EXPECT_EQ(discretion.LogText({589, 3, "Failed to decrypt ssid with "}), "Failed to decrypt ssid with ");
  EXPECT_EQ(discretion.LogText({575, 3, "Failed to decode base64 string: x"}),
            "Failed to decode base64 string: ********");
  EXPECT_EQ(discretion.LogText({760, 3, "Invalid security mode: x, select wpa2."}),
            "Invalid security mode: x, select wpa2.");
  EXPECT_EQ(Discretion({.show_secrets = true}, {}).LogText({589, 3, "Failed to decrypt ssid with ab"}),
            "Failed to decrypt ssid with ab");
}

TEST(Discretion, GivesTheSameValueTheSameDigestForAsLongAsItLives) {
  const Discretion discretion({.anonymous = true}, Device());
  const std::string ssid = discretion.Ssid("Home net");
  EXPECT_THAT(ssid, MatchesRegex("ssid-[0-9a-f]{8}"));
  EXPECT_EQ(discretion.StoredSsid("SG9tZSBuZXQ="), ssid);
  EXPECT_EQ(discretion.Text("ssid=SG9tZSBuZXQ=, Home net"), "ssid=" + ssid + ", " + ssid);
  EXPECT_NE(discretion.Ssid("Home ne"), ssid);
  EXPECT_NE(Discretion({.anonymous = true}, Device()).Ssid("Home net"), ssid);
}

TEST(Discretion, KnowsAnAddressInEachOfItsForms) {
  const Discretion discretion({.anonymous = true}, {});
  const std::string mac = discretion.Text("02:aa:00:00:00:01");
  EXPECT_THAT(mac, MatchesRegex("mac-[0-9a-f]{8}"));
  EXPECT_EQ(discretion.Text("/wifi_ap_02:AA:00:00:00:01 02-aa-00-00-00-01"), "/wifi_ap_" + mac + " " + mac);
  EXPECT_EQ(discretion.Text("wifi_ap_00:00:00:00:00:00"), "wifi_ap_00:00:00:00:00:00");
  EXPECT_THAT(discretion.Text("mail=a.b@example.net,c@example.net"),
              MatchesRegex("mail=mail-[0-9a-f]{8},mail-[0-9a-f]{8}"));
}

TEST(Discretion, LeavesNothingPersonalInAReport) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_mail_list", "host@example.net, other@example.net");
  household.Set(Household::k24, "ssid", "no base64 but a name");
  const lab::RunResult run = household.Update();
  Discretion discretion({.anonymous = true}, run.before);
  discretion.Learn(run.after);
  const std::string json = lab::ToText(lab::ToJson(lab::Tell("device", "8000", run, discretion)));
  for (const char* personal :
       {"Home", "SG9tZQ", "\"Guests\"", "R3Vlc3Rz", "02:11:32:00:00:04", "02:aa:00:00:00:01", "Tablet",
        "Phone", "example.net", "but a name", "home secret", "guest secret", "87654325"}) {
    EXPECT_THAT(json, Not(HasSubstr(personal)));
  }
}

}  // namespace
}  // namespace lab_test
