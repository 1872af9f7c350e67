#include "lab/reports/discretion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lab/reports/household_json.h"
#include "tests/lab/household/household.h"

namespace lab_test {
namespace {

using lab::Discretion;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

lab::Entry Text(const std::string& text) {
  return {lab::Entry::Kind::File, 0644, text};
}

lab::Tree Device() {
  return {{"/wifi_ap", Text("ssid=SG9tZSBuZXQ=\npassword=plain word\nguest_password=\n")},
          {"/secret.key", Text("0011aabb\n")},
          {"/mf_deny.conf", Text("[one]\ndesc=Living room TV\nmac=02:AA:00:00:00:01\n")},
          {"/network.json.default", Text("[{\"ssid\": \"Home net\", \"password\": \"opened word\"}]")}};
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

TEST(Discretion, MasksASecretThatStandsInAnother) {
  const Discretion discretion({}, {{"/wifi_ap", Text("password=word\nguest_password=my password9\n")}});
  EXPECT_EQ(discretion.Text("my password9; a word"), "********; a ********");
}

TEST(Discretion, FindsSecretsInUnusualPlaces) {
  const Discretion discretion(
      {},
      {{"/wifi_ap", Text("enabled=yes\rPassword=of another system\rssid=eA==\r")},
       {"/crlf", Text("password=with an end\r\n")},
       {"/usr/kelp/etc/mesh/mesh.conf", Text("{\"mesh\": {\"psk\": \"of the mesh\", \"pin\": 43218765}}")},
       {"/wifi_nvram", Text("wl0_radius_key=of the server\n#password=of last year\nwl_psk: of the dump\n")}});
  EXPECT_EQ(
      discretion.Text(
          "of another system, with an end, of the mesh, 43218765, of the server, of last year, of the dump"),
      "********, ********, ********, ********, ********, ********, ********");
}

TEST(Discretion, MasksASecretOfAnyBytesInEachFormItTakes) {
  const Discretion discretion(
      {}, {{"/wifi_ap", Text("password=<b>\"caf\xE9\"\\</b>\nguest_password=caf\xC3\xA9 rouge\n")}});
  EXPECT_EQ(discretion.Text("is <b>\"caf\xE9\"\\</b>"), "is ********");
  EXPECT_EQ(discretion.Text("is \"<b>\\\"caf\xE9\\\"\\\\</b>\""), "is \"********\"");
  EXPECT_EQ(discretion.Text("caf\xC3\xA9 rouge, caf\\u00e9 rouge"), "********, ********");
}

TEST(Discretion, MasksAnSsidThatHoldsASecret) {
  const lab::Tree device{{"/wifi_ap", Text("ssid=U3VtbWVyIDQy\npassword=Summer 42\n")}};
  const Discretion discretion({}, device);
  EXPECT_EQ(discretion.Ssid("Summer 42"), "********");
  EXPECT_EQ(discretion.StoredSsid("U3VtbWVyIDQy"), "********");
  EXPECT_EQ(discretion.FileText("/wifi_ap", "ssid=U3VtbWVyIDQy\n"), "ssid=********\n");
  EXPECT_EQ(discretion.Ssid("Winter 42"), "Winter 42");
  EXPECT_EQ(Discretion({.show_secrets = true}, device).Ssid("Summer 42"), "Summer 42");
}

TEST(Discretion, MasksASecretOfAnyKindInADocument) {
  const Discretion discretion({}, {});
  Json::Value document;
  document["password"] = 12345678;
  document["pin"][0] = "1234";
  document["secret"]["inner"] = "x";
  document["pin_enabled"] = true;
  document["psk"] = "";
  const Json::Value shown = discretion.Document(document);
  EXPECT_EQ(shown["password"], "********");
  EXPECT_EQ(shown["pin"], "********");
  EXPECT_EQ(shown["secret"], "********");
  EXPECT_EQ(shown["pin_enabled"], true);
  EXPECT_EQ(shown["psk"], "");
}

TEST(Discretion, ShowsNothingOfAJsonFileThatAForgivingReaderWouldTake) {
  const Discretion discretion({}, {});
  for (const char* content : {"{\"password\": \"swordfish\", \"password\": \"\"}", "{} // password swordfish",
                              "{\"a\": 1} swordfish", "{\"password\": \"swordfish"}) {
    for (const char* path : {"/mesh.conf", "/network.json"}) {
      EXPECT_THAT(discretion.FileText(path, content), Not(HasSubstr("swordfish"))) << content;
    }
  }
  EXPECT_EQ(discretion.FileText("/mesh.conf", "{\"repeater_nodes\":  []}"), "{\"repeater_nodes\":  []}");
  EXPECT_EQ(discretion.FileText("/mf_deny.conf", "[one]\nenable=yes\n"), "[one]\nenable=yes\n");
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

TEST(Discretion, GivesAnAddressTheSameDigestInEachOfItsForms) {
  const lab::Tree device{{"/proc/sys/kernel/kelp_mac_address4", Text("0211320000AB\n")}};
  const Discretion discretion({.anonymous = true}, device);
  const std::string mac = discretion.Text("02:11:32:00:00:ab");
  EXPECT_EQ(discretion.FileText("/proc/sys/kernel/kelp_mac_address4", "0211320000AB\n"), mac + "\n");
  EXPECT_EQ(discretion.Text("0211.3200.00ab"), mac);
  EXPECT_EQ(discretion.Entry("mac=02-11-32-00-00-AB"), "mac=" + mac);
  EXPECT_EQ(discretion.Entry("mac=00:00:00:00:00:00"), "mac=00:00:00:00:00:00");
  const std::string mail = discretion.Text("host@example.net");
  EXPECT_EQ(discretion.Text("Host <host@Example.net>."), "Host <" + mail + ">.");
  EXPECT_EQ(discretion.Mails(" host@example.net,,Grandma").substr(0, mail.size() + 3), " " + mail + ",,");
  EXPECT_THAT(discretion.Mails("Grandma"), MatchesRegex("mail-[0-9a-f]{8}"));
}

TEST(Discretion, HidesShortAndOddPersonalThingsByTheirKeys) {
  const Discretion discretion({.anonymous = true}, {{"/list", Text("[Attic]\nmac=02:aa:00:00:00:0\n")}});
  EXPECT_THAT(discretion.Entry("wifi_ap: guest_ssid=Bob"),
              MatchesRegex("wifi_ap: guest_ssid=ssid-[0-9a-f]{8}"));
  EXPECT_THAT(discretion.Entry("desc=TV"), MatchesRegex("desc=name-[0-9a-f]{8}"));
  EXPECT_THAT(discretion.Entry("mf: [Attic] mac=02:aa:00:00:00:0 is no address"),
              MatchesRegex("mf: \\[name-[0-9a-f]{8}\\] mac=mac-[0-9a-f]{8} is no address"));
  EXPECT_THAT(discretion.FileText("/mesh.conf", "{\"nodes\": [{\"name\": \"Loft\", \"model\": \"lotus\"}]}"),
              Not(HasSubstr("Loft")));
  Json::Value profile;
  profile["name"] = "Guest Network - Deny";
  EXPECT_EQ(discretion.Document(profile), profile);
}

TEST(Discretion, TakesTextsOfAnyLength) {
  const Discretion discretion({.anonymous = true}, {});
  const std::string digits(1 << 20, 'a');
  EXPECT_EQ(discretion.Text(digits), digits);
  const std::string quotes(1 << 20, '\'');
  EXPECT_EQ(discretion.Text(quotes), quotes);
}

TEST(Discretion, LeavesNothingPersonalInAReport) {
  Household household;
  household.Set(Household::k24, "guest_pwd_rotate_mail_list", "host@example.net, other@example.net");
  household.Set(Household::k24, "ssid", "no base64 but a name");
  const lab::RunResult run = household.Update();
  Discretion discretion({.anonymous = true}, run.before);
  discretion.Learn(run.after);
  const std::string json = lab::ToJson(lab::Tell("backup of 02-11-32-00-00-04", "8000", run, discretion));
  for (const char* personal : {"Home", "SG9tZQ", "\"Guests\"", "R3Vlc3Rz", "02:11:32:00:00:04",
                               "02-11-32-00-00-04", "02:aa:00:00:00:01", "Tablet", "Handset", "example.net",
                               "but a name", "home secret", "guest secret", "87654325"}) {
    EXPECT_THAT(json, Not(HasSubstr(personal)));
  }
}

}  // namespace
}  // namespace lab_test
