#include "builders/feature_setting.h"

#include <gtest/gtest.h>

#include <cctype>
#include <limits>
#include <string>
#include <utility>

#include "lab/images/secret_seal.h"
#include "tests/support/record_printing.h"
#include "tests/support/test_device.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::Entries;
using testing_support::Error;
using testing_support::LogLines;
using Util::RadioFrequency;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_ap_00:11:32:2a:0b:0c";
constexpr const char* kKey = "8f1d5c3b7a9e02644d6b8890aabbccddeeff00112233445566778899a0b1c2d3";
constexpr bool kPrimary = false;
constexpr bool kGuest = true;

/// What a file without any keys gives; the rest is zero, false or empty.
FeatureSetting Defaults() {
  FeatureSetting setting{};
  setting.frequency = RadioFrequency::Band2_4GHz;
  setting.max_num_client = 256;
  setting.security = 4;
  setting.schedule_kind = 1;
  setting.mac_filter_profile_id = -1;
  setting.guestPasswordRotation.date_type = 1;
  setting.guestPasswordRotation.strength = 1;
  setting.guestPasswordRotation.date = "2021-01-01 00:00";
  setting.guestPasswordRotation.week_day = "0,1,2,3,4,5,6";
  setting.preset_on = true;
  setting.key_rotation = 3600;
  setting.dtim = 4;
  return setting;
}

template <typename T>
FeatureSetting DefaultsBut(T FeatureSetting::*field, const T& value) {
  FeatureSetting setting = Defaults();
  setting.*field = value;
  return setting;
}

/// The lines of a file without any keys, in order.
LogLines LinesOfDefaults() {
  return {Error(760, "Invalid security mode: , select wpa2."), Error(589, "Failed to decrypt ssid with "),
          Error(776, "Invalid pmf mode: , select disabled.")};
}

std::string Prefixed(const std::string& key, bool is_guest) {
  return is_guest ? "guest_" + key : key;
}

class FeatureSettingTest : public ::testing::Test {
 protected:
  FeatureSettingTest() { device_.Files().Write("/usr/kelp/etc/secret.key", kKey); }

  FeatureSetting Build(bool is_guest) {
    return device_.Run([&] {
      return BuildFeatureSetting(UpdateContext{}, kFile, RadioFrequency::Band2_4GHz, -1, is_guest);
    });
  }
  FeatureSetting Build(bool is_guest, const Entries& entries) {
    device_.WriteEntries(kFile, entries);
    return Build(is_guest);
  }
  /// That in each network `text` under its own key, and under no other, gives the field `value`.
  template <typename T>
  void ExpectSets(const std::string& key, T FeatureSetting::*field, const std::string& text, const T& value) {
    SCOPED_TRACE(key + "=" + text);
    EXPECT_EQ(Build(kPrimary, {{key, text}}), DefaultsBut(field, value));
    EXPECT_EQ(Build(kGuest, {{"guest_" + key, text}}), DefaultsBut(field, value));
    EXPECT_EQ(Build(kPrimary, {{"guest_" + key, text}}), Defaults());
    EXPECT_EQ(Build(kGuest, {{key, text}, {"guest_guest_" + key, text}}), Defaults());
  }

  testing_support::TestDevice device_;
};

// Defaults

TEST_F(FeatureSettingTest, FileThatIsMissingOrHasNoKeysGivesTheDefaultsAndThreeLinesInOrder) {
  const auto expect_defaults = [&](bool is_guest) {
    EXPECT_EQ(Build(is_guest), Defaults());
    EXPECT_EQ(device_.Log(), LinesOfDefaults());
  };
  expect_defaults(kPrimary);
  device_.Files().MakeDirectory(kFile);
  expect_defaults(kPrimary);
  device_.Files().Remove(kFile);
  device_.WriteEntries(kFile, {});
  expect_defaults(kPrimary);
  expect_defaults(kGuest);
}

TEST_F(FeatureSettingTest, MembersWithoutALegacyKeyCannotBeSet) {
  Entries entries;
  for (const char* key : {"frequency",
                          "restrict_guest_access",
                          "auth_server_port",
                          "schedule_kind",
                          "preset_number",
                          "preset_flag",
                          "preset_on",
                          "mac_filter_profile_id",
                          "enable",
                          "date_type",
                          "strength",
                          "date",
                          "week_day",
                          "notify_enable",
                          "mail_list",
                          "guest_pwd_rotate_enable",
                          "guest_pwd_rotate_date_type",
                          "guest_pwd_rotate_strength",
                          "guest_pwd_rotate_date",
                          "guest_pwd_rotate_week_day",
                          "guest_pwd_rotate_notify_enable",
                          "guest_pwd_rotate_mail_list",
                          "smartconnect_enabled"}) {
    entries.emplace_back(key, "yes");
    entries.emplace_back(std::string("guest_") + key, "yes");
  }
  EXPECT_EQ(Build(kPrimary, entries), Defaults());
  EXPECT_EQ(Build(kGuest, entries), Defaults());
}

TEST_F(FeatureSettingTest, RadioAndProfileAreStoredAsTheyAre) {
  using Limits = std::numeric_limits<std::int32_t>;
  for (const auto& [radio, profile] :
       {std::pair{0, -1}, {1, 0}, {2, 3}, {3, 17}, {4, -2}, {7, Limits::max()}, {-1, Limits::min()}}) {
    const FeatureSetting setting = device_.Run([radio = radio, profile = profile] {
      return BuildFeatureSetting(UpdateContext{}, kFile, static_cast<RadioFrequency>(radio), profile,
                                 kPrimary);
    });
    FeatureSetting expected = Defaults();
    expected.frequency = static_cast<RadioFrequency>(radio);
    expected.mac_filter_profile_id = profile;
    EXPECT_EQ(setting, expected) << radio << ", " << profile;
  }
}

TEST_F(FeatureSettingTest, NoFactOfTheDeviceMatters) {
  device_.WriteEntries(kFile, {});
  const UpdateContext context{1, MeshRole::Repeater, Util::SupportedModel::CEDAR};
  EXPECT_EQ(device_.Run([&] {
    return BuildFeatureSetting(context, kFile, RadioFrequency::Band2_4GHz, -1, kPrimary);
  }),
            Defaults());
}

// Flags

TEST_F(FeatureSettingTest, FlagsAreTheExactWordYesOfTheirNetworksKeys) {
  const std::pair<const char*, bool FeatureSetting::*> flags[] = {
      {"enabled", &FeatureSetting::enabled},
      {"display_ssid", &FeatureSetting::display_ssid},
      {"schedule_enabled", &FeatureSetting::schedule_enabled},
      {"ampdu", &FeatureSetting::ampdu},
      {"uapsd_enable", &FeatureSetting::uapsd_enable},
      {"ap_mumimo", &FeatureSetting::ap_mumimo},
      {"ap_enable_11r", &FeatureSetting::ap_enable_11r},
      {"ap_mcast_translating", &FeatureSetting::ap_mcast_translating},
      {"country_abbrev_override_enable", &FeatureSetting::country_abbrev_override_enable},
      {"ap_isolation", &FeatureSetting::ap_isolation},
      {"enable_ext_nss", &FeatureSetting::enable_ext_nss},
      {"sc_disable_legacy_steering", &FeatureSetting::sc_disable_legacy_steering}};
  for (const auto& [key, field] : flags) {
    ExpectSets(key, field, "yes", true);
    for (const char* word : {"Yes", "YES", "yes ", " yes", "ye", "yess", "y", "1", "true", "on", "no", ""}) {
      EXPECT_EQ(Build(kPrimary, {{key, word}}), Defaults()) << key << '=' << word;
    }
    std::string upper_case = key;
    for (char& letter : upper_case) letter = static_cast<char>(std::toupper(letter));
    EXPECT_EQ(Build(kPrimary, {{upper_case, "yes"}}), Defaults());
  }
}

// Guest access

TEST_F(FeatureSettingTest, GuestAccessIsRestrictedByTheExactWordNoUnderTheGuestsKey) {
  const auto restricted = DefaultsBut(&FeatureSetting::restrict_guest_access, true);
  EXPECT_EQ(Build(kGuest, {{"guest_allow_access_guest", "no"}}), restricted);
  for (const char* word : {"yes", "", "No", "NO", "no ", " no", "n", "not", "0", "false"}) {
    EXPECT_EQ(Build(kGuest, {{"guest_allow_access_guest", word}}), Defaults()) << '"' << word << '"';
  }
  EXPECT_EQ(Build(kGuest, {{"allow_access_guest", "no"}}), Defaults());
  EXPECT_EQ(Build(kPrimary, {{"allow_access_guest", "no"}, {"guest_allow_access_guest", "no"}}), Defaults());
}

// Numbers

TEST_F(FeatureSettingTest, NumbersAreTheDecimalNumberAtTheStartOfTheirTextOrTheirDefault) {
  const std::pair<const char*, std::int32_t FeatureSetting::*> numbers[] = {
      {"max_num_client", &FeatureSetting::max_num_client},
      {"auth_server_Port", &FeatureSetting::auth_server_port},
      {"key_rotation", &FeatureSetting::key_rotation},
      {"dtim", &FeatureSetting::dtim}};
  const std::pair<const char*, std::int32_t> texts[] = {
      {"0", 0},
      {"64 followed by words", 64},
      {" 42", 42},
      {"\t42", 42},
      {"-1", -1},
      {"+7", 7},
      {"12abc", 12},
      {"010", 10},
      {"0x10", 0},
      {"1e3", 1},
      {"8.9", 8},
      {"2147483647", 2147483647},
      {"-2147483648", std::numeric_limits<std::int32_t>::min()}};
  for (const auto& [key, field] : numbers) {
    ExpectSets(key, field, "77", 77);
    for (const auto& [text, value] : texts) {
      EXPECT_EQ(Build(kPrimary, {{key, text}}), DefaultsBut(field, value)) << key << '=' << text;
    }
    for (const char* text : {"", " ", "abc", "x4", "-", "+", "- 5", "--5", "\"", "2147483648", "-2147483649",
                             "3000000000", "4294967296", "99999999999999999999999999"}) {
      EXPECT_EQ(Build(kPrimary, {{key, text}}), Defaults()) << key << '=' << text;
      EXPECT_EQ(device_.Log(), LinesOfDefaults());
    }
  }
}

TEST_F(FeatureSettingTest, TextsStandAsTheyAre) {
  const std::string text = "  Mon 08:00-22:00 \\ %s \xff ";
  ExpectSets("auth_server_ip", &FeatureSetting::auth_server_ip, text, text);
  ExpectSets("schedule", &FeatureSetting::schedule, text, text);
}

TEST_F(FeatureSettingTest, AuthenticationServerIsReadForEverySecurityMode) {
  for (const char* word : {"disabled", "OWE", "WEP", "PERSONAL_WPA3", "ENTERPRISE_WPA3"}) {
    for (const bool is_guest : {kPrimary, kGuest}) {
      const FeatureSetting setting = Build(is_guest, {{Prefixed("security", is_guest), word},
                                                      {Prefixed("auth_server_ip", is_guest), "192.168.1.9"},
                                                      {Prefixed("auth_server_Port", is_guest), "1812"}});
      EXPECT_EQ(setting.auth_server_ip, "192.168.1.9") << word;
      EXPECT_EQ(setting.auth_server_port, 1812) << word;
    }
  }
}

// SSID

TEST_F(FeatureSettingTest, SsidIsDecodedToBytesInAnyEncoding) {
  ExpectSets("ssid", &FeatureSetting::ssid, "S2VscCBIb21l", std::string("Kelp Home"));
  ExpectSets("ssid", &FeatureSetting::ssid,
             "//////////////////////////////////////////8=", std::string(32, '\xff'));
  ExpectSets("ssid", &FeatureSetting::ssid, "IlwBCn8=", std::string("\"\\\x01\n\x7f"));
}

TEST_F(FeatureSettingTest, SsidIsCutAtAnEmbeddedNul) {
  EXPECT_EQ(Build(kPrimary, {{"ssid", "YWIAY2Q="}}).ssid, "ab");  // "ab", NUL, "cd"
  EXPECT_EQ(Build(kPrimary, {{"ssid", "AGFi"}}).ssid, "");
}

TEST_F(FeatureSettingTest, SsidThatIsNoBase64IsEmptyAndLogged) {
  for (const bool is_guest : {kPrimary, kGuest}) {
    EXPECT_EQ(Build(is_guest, {{Prefixed("ssid", is_guest), "Kelp Home!"}}), Defaults());
    EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: , select wpa2."),
                                       Error(575, "Failed to decode base64 string: Kelp Home!"),
                                       Error(589, "Failed to decrypt ssid with "),
                                       Error(776, "Invalid pmf mode: , select disabled.")}));
  }
}

// Security and secret

class SecretTest : public FeatureSettingTest {
 protected:
  const Entries secrets_{{"password", lab::SealSecret("primary password", kKey)},
                         {"auth_server_shared_secret", lab::SealSecret("primary shared", kKey)},
                         {"guest_password", lab::SealSecret("guest password", kKey)},
                         {"guest_auth_server_shared_secret", lab::SealSecret("guest shared", kKey)}};
};

TEST_F(SecretTest, FollowsFromTheSecurityModeOfItsNetwork) {
  constexpr int kFirstEnterpriseMode = 8;
  int security = 0;
  for (const char* word : {"disabled", "OWE", "WEP", "PERSONAL_WPA", "PERSONAL_WPA2", "PERSONAL_WPA3",
                           "PERSONAL_WPA_MIXED", "PERSONAL_WPA2_WPA3_MIXED", "ENTERPRISE_WPA",
                           "ENTERPRISE_WPA2", "ENTERPRISE_WPA3", "ENTERPRISE_WPA_MIXED"}) {
    const bool is_enterprise = security >= kFirstEnterpriseMode;
    for (const bool is_guest : {kPrimary, kGuest}) {
      SCOPED_TRACE(Prefixed(word, is_guest));
      Entries entries = secrets_;
      entries.emplace_back(Prefixed("security", is_guest), word);
      entries.emplace_back(Prefixed("security", !is_guest), is_enterprise ? "WEP" : "ENTERPRISE_WPA");
      FeatureSetting expected = Defaults();
      expected.security = security;
      expected.password =
          std::string(is_guest ? "guest " : "primary ") + (is_enterprise ? "shared" : "password");
      EXPECT_EQ(Build(is_guest, entries), expected);
      EXPECT_EQ(device_.Log(), LogLines{Error(776, "Invalid pmf mode: , select disabled.")});
    }
    ++security;
  }
}

TEST_F(SecretTest, UnknownSecurityWordIsWPA2AndTakesThePassword) {
  for (const char* word : {"wpa2", "ENTERPRISE_WPA2 ", "enterprise_wpa2", "ENTERPRISE", ""}) {
    Entries entries = secrets_;
    entries.emplace_back("security", word);
    const FeatureSetting setting = Build(kPrimary, entries);
    EXPECT_EQ(setting.security, 4) << word;
    EXPECT_EQ(setting.password, "primary password") << word;
    EXPECT_EQ(device_.Log(),
              (LogLines{Error(760, std::string("Invalid security mode: ") + word + ", select wpa2."),
                        Error(776, "Invalid pmf mode: , select disabled.")}));
  }
}

TEST_F(SecretTest, EnterpriseNetworkWithoutASharedSecretDoesNotFallBackToThePassword) {
  const Entries entries{{"security", "ENTERPRISE_WPA2"},
                        {"password", lab::SealSecret("primary password", kKey)},
                        {"guest_security", "ENTERPRISE_WPA2"},
                        {"guest_password", lab::SealSecret("guest password", kKey)}};
  EXPECT_EQ(Build(kPrimary, entries).password, "");
  EXPECT_EQ(Build(kGuest, entries).password, "");
}

TEST_F(SecretTest, GuestSecretIsNotTakenFromThePrimaryNetwork) {
  const Entries entries{{"password", lab::SealSecret("primary password", kKey)},
                        {"auth_server_shared_secret", lab::SealSecret("primary shared", kKey)}};
  EXPECT_EQ(Build(kGuest, entries), Defaults());
}

TEST_F(SecretTest, SecretThatCannotBeDecryptedIsEmptyAndLoggedAsItIsStored) {
  EXPECT_EQ(
      Build(kPrimary, {{"security", "OWE"}, {"password", "plain text"}, {"pmf_mode", "capable"}}).password,
      "");
  EXPECT_EQ(device_.Log(), LogLines{Error(589, "Failed to decrypt ssid with plain text")});
}

TEST_F(SecretTest, SecretIsNotBase64DecodedAndSsidNotDecrypted) {
  const std::string sealed = lab::SealSecret("secret", kKey);
  const FeatureSetting setting = Build(kPrimary, {{"ssid", sealed}, {"password", "S2VscCBIb21l"}});
  EXPECT_EQ(setting.password, "");
  EXPECT_NE(setting.ssid, "secret");
}

// Protected management frames

TEST_F(FeatureSettingTest, PMFModeOfBothNetworksIsThePrimaryOnes) {
  const std::pair<const char*, std::int32_t> words[] = {{"disabled", 0}, {"capable", 1}, {"required", 2}};
  for (const auto& [word, value] : words) {
    for (const bool is_guest : {kPrimary, kGuest}) {
      EXPECT_EQ(Build(is_guest, {{"pmf_mode", word}, {"guest_pmf_mode", "maybe"}}),
                DefaultsBut(&FeatureSetting::pmf_mode, value));
      EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: , select wpa2."),
                                         Error(589, "Failed to decrypt ssid with ")}));
    }
  }
  EXPECT_EQ(Build(kGuest, {{"guest_pmf_mode", "required"}}), Defaults());
  EXPECT_EQ(device_.Log(), LinesOfDefaults());
}

// Order

TEST_F(FeatureSettingTest, LinesComeInTheOrderSecuritySsidSecretPMFAndWordsAreNoFormats) {
  const Entries entries{{"pmf_mode", "%d"},         {"guest_password", "gp!"}, {"guest_ssid", "gs!"},
                        {"guest_security", "wpa8"}, {"password", "%s%s"},      {"ssid", "%n"},
                        {"security", "%s%n"}};
  EXPECT_EQ(Build(kPrimary, entries), Defaults());
  EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: %s%n, select wpa2."),
                                     Error(575, "Failed to decode base64 string: %n"),
                                     Error(589, "Failed to decrypt ssid with %s%s"),
                                     Error(776, "Invalid pmf mode: %d, select disabled.")}));
  EXPECT_EQ(Build(kGuest, entries), Defaults());
  EXPECT_EQ(device_.Log(), (LogLines{Error(760, "Invalid security mode: wpa8, select wpa2."),
                                     Error(575, "Failed to decode base64 string: gs!"),
                                     Error(589, "Failed to decrypt ssid with gp!"),
                                     Error(776, "Invalid pmf mode: %d, select disabled.")}));
}

// Everything at once

TEST_F(FeatureSettingTest, BothNetworksStandInOneFile) {
  const Entries entries{
      {"enabled", "yes"},
      {"ssid", "S2VscCBIb21l"},
      {"display_ssid", "no"},
      {"max_num_client", "64"},
      {"security", "ENTERPRISE_WPA3"},
      {"password", lab::SealSecret("unused", kKey)},
      {"auth_server_shared_secret", lab::SealSecret("radius secret", kKey)},
      {"auth_server_ip", "10.0.0.2"},
      {"auth_server_Port", "1812"},
      {"schedule_enabled", "yes"},
      {"schedule", "111100001111"},
      {"pmf_mode", "required"},
      {"ampdu", "no"},
      {"uapsd_enable", "yes"},
      {"ap_mumimo", "no"},
      {"ap_enable_11r", "yes"},
      {"ap_mcast_translating", "no"},
      {"country_abbrev_override_enable", "yes"},
      {"ap_isolation", "no"},
      {"enable_ext_nss", "yes"},
      {"sc_disable_legacy_steering", "no"},
      {"key_rotation", "7200"},
      {"dtim", "2"},
      {"guest_enabled", "no"},
      {"guest_ssid", "VmlzaXRvcnM="},
      {"guest_display_ssid", "yes"},
      {"guest_max_num_client", "16"},
      {"guest_allow_access_guest", "no"},
      {"guest_security", "PERSONAL_WPA2_WPA3_MIXED"},
      {"guest_password", lab::SealSecret("welcome!", kKey)},
      {"guest_auth_server_ip", "10.0.0.3"},
      {"guest_auth_server_Port", "1813"},
      {"guest_schedule_enabled", "no"},
      {"guest_schedule", "0000"},
      {"guest_ampdu", "yes"},
      {"guest_uapsd_enable", "no"},
      {"guest_ap_mumimo", "yes"},
      {"guest_ap_enable_11r", "no"},
      {"guest_ap_mcast_translating", "yes"},
      {"guest_country_abbrev_override_enable", "no"},
      {"guest_ap_isolation", "yes"},
      {"guest_enable_ext_nss", "no"},
      {"guest_sc_disable_legacy_steering", "yes"},
      {"guest_key_rotation", "0"},
      {"guest_dtim", "3"},
  };

  FeatureSetting primary = Defaults();
  primary.enabled = true;
  primary.ssid = "Kelp Home";
  primary.max_num_client = 64;
  primary.security = 10;
  primary.password = "radius secret";
  primary.auth_server_ip = "10.0.0.2";
  primary.auth_server_port = 1812;
  primary.schedule_enabled = true;
  primary.schedule = "111100001111";
  primary.pmf_mode = 2;
  primary.uapsd_enable = true;
  primary.ap_enable_11r = true;
  primary.country_abbrev_override_enable = true;
  primary.enable_ext_nss = true;
  primary.key_rotation = 7200;
  primary.dtim = 2;
  EXPECT_EQ(Build(kPrimary, entries), primary);
  EXPECT_EQ(device_.Log(), LogLines{});

  FeatureSetting guest = Defaults();
  guest.ssid = "Visitors";
  guest.display_ssid = true;
  guest.max_num_client = 16;
  guest.restrict_guest_access = true;
  guest.security = 7;
  guest.password = "welcome!";
  guest.auth_server_ip = "10.0.0.3";
  guest.auth_server_port = 1813;
  guest.schedule = "0000";
  guest.pmf_mode = 2;
  guest.ampdu = true;
  guest.ap_mumimo = true;
  guest.ap_mcast_translating = true;
  guest.ap_isolation = true;
  guest.sc_disable_legacy_steering = true;
  guest.key_rotation = 0;
  guest.dtim = 3;
  EXPECT_EQ(Build(kGuest, entries), guest);
  EXPECT_EQ(device_.Log(), LogLines{});
}

}  // namespace
}  // namespace KELP::Wifi::Updater
